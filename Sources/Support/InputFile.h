#pragma once

#include "Support/Bytes.h"

#include <cstddef>
#include <string>

namespace tavel {

/// A regular file that is open for reading. What is no regular file is not waited for, as a FIFO could be for
/// ever. Failures throw FileError.
class InputFile {
public:
    /// What to do when the path's last part is a symbolic link.
    enum class Links { follow, refuse };

    /// A path with a zero byte names nothing.
    InputFile(const std::string& path, Links links);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// The file's size in bytes when it was opened. It may change at any time.
    std::size_t size() const { return size_; }

    /// What the file holds from where the last call ended, but at most `limit` bytes; the memory taken
    /// follows what is there, not the limit.
    Bytes read(std::size_t limit);

private:
    std::string path_;
    int descriptor_ = -1;
    std::size_t size_ = 0;
};

} // namespace tavel
