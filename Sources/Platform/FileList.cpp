#include "Platform/FileList.h"

#include "Support/FileUrl.h"

#include <utility>

namespace tavel {

namespace {

constexpr std::size_t escapedByteLength = 3; // "%20"

/// "file://", the longest name of a host, a slash, and a line end of two bytes.
constexpr std::size_t urlOverhead = 7 + 255 + 1 + 2;

} // namespace

std::size_t largestUrlBytes(const FileListLimit& limit) {
    return escapedByteLength * limit.pathBytes + urlOverhead * limit.files;
}

bool FileListBuilder::addPath(std::string path) {
    if (!list_.isComplete)
        return false;
    if (list_.paths.size() == limit_.files || path.size() > limit_.pathBytes - pathBytes_) {
        list_.isComplete = false;
        return false;
    }
    pathBytes_ += path.size();
    list_.paths.push_back(std::move(path));
    return true;
}

bool FileListBuilder::addUrl(std::string_view url) {
    const std::size_t longest = largestUrlBytes({1, limit_.pathBytes});
    // Whole names at its beginning tell whether a URL that is too long names a file at all.
    const bool isTooLong = url.size() > longest;
    auto path = pathFromFileUrl(isTooLong ? url.substr(0, url.rfind('/', longest) + 1) : url);
    if (path && isTooLong)
        list_.isComplete = false;
    else if (path)
        addPath(std::move(*path));
    return list_.isComplete;
}

void FileListBuilder::noteLostRest() {
    if (!list_.paths.empty())
        list_.isComplete = false;
}

} // namespace tavel
