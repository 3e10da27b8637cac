#pragma once

#include "Support/Bytes.h"

#include <cstddef>
#include <string>

namespace tavel {

/// A regular file that is open for reading. Any other kind of file is refused without waiting, as the open of
/// a FIFO could block for ever. Failures throw FileError.
class InputFile {
public:
    /// What to do when the last component of the path is a symbolic link.
    enum class Links { follow, refuse };

    /// Fails with ENOENT for a path with a zero byte.
    InputFile(const std::string& path, Links links);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// The file's size in bytes when it was opened. It may change at any time.
    std::size_t size() const { return size_; }

    /// Reads on from where the last call ended, at most `limit` bytes. Allocates for the file's content, not
    /// for the limit.
    Bytes read(std::size_t limit);

    /// Closes the file. Some file systems report only here that what was read is not the file's content. The
    /// destructor closes without a report. Nothing may be called afterwards.
    void close();

private:
    std::string path_;
    int descriptor_ = -1;
    std::size_t size_ = 0;
};

} // namespace tavel
