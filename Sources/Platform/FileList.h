#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {

/// How many files of another program's content a caller takes.
struct FileListLimit {
    std::size_t files;
    std::size_t pathBytes; // of all paths together, in UTF-8
};

/// The most files that are taken of any content: 10,000, with 2 MiB of paths.
inline constexpr FileListLimit mostFilesOfAContent{10'000, 2'097'152};

/// The files that a content names.
struct FileList {
    std::vector<std::string> paths;
    bool isComplete = true; // if false, the content names more than the limit, and `paths` holds only some
};

/// Collects the files of a content up to a limit. Nothing beyond it is copied.
class FileListBuilder {
public:
    explicit FileListBuilder(const FileListLimit& limit) : limit_(limit) {}

    /// Adds the path, or the one that the URL names, if any. False once the limit is exceeded: nothing more
    /// can be added.
    bool addPath(std::string path);
    bool addUrl(std::string_view url);

    /// More may have followed that could not be read. A list without a single file stays complete.
    void noteLostRest();

    FileList take() { return std::move(list_); }

private:
    FileListLimit limit_;
    std::size_t pathBytes_ = 0;
    FileList list_;
};

/// The most bytes that file URLs within the limit can take, with a line end each: every byte of a path may be
/// escaped, and a URL may name a host (RFC 8089).
std::size_t largestUrlBytes(const FileListLimit& limit);

} // namespace tavel
