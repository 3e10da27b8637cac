#include "Support/InputFile.h"

#include "Support/FileError.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

namespace tavel {

namespace {

constexpr std::size_t smallestGrowth = std::size_t{64} * 1024;

int openForReading(const std::string& path, InputFile::Links links) {
    if (path.find('\0') != std::string::npos) {
        errno = ENOENT;
        return -1;
    }
    // Without O_NONBLOCK, opening a FIFO waits for its writer.
    int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    if (links == InputFile::Links::refuse)
        flags |= O_NOFOLLOW;
    return open(path.c_str(), flags);
}

/// Reads once, at most `room` bytes. 0 at the end of the file, -1 with errno on an error.
ssize_t readSome(int descriptor, char* target, std::size_t room) {
    for (;;) {
        const ssize_t count = read(descriptor, target, room);
        if (count >= 0 || errno != EINTR)
            return count;
    }
}

} // namespace

InputFile::InputFile(const std::string& path, Links links) : path_(path) {
    descriptor_ = openForReading(path, links);
    if (descriptor_ < 0)
        throw FileError(FileError::Operation::read, errno, path);
    struct stat status {};
    int failure = fstat(descriptor_, &status) == 0 ? 0 : errno;
    if (failure == 0 && !S_ISREG(status.st_mode))
        failure = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    if (failure != 0) {
        ::close(descriptor_);
        throw FileError(FileError::Operation::read, failure, path);
    }
    size_ = static_cast<std::size_t>(status.st_size);
}

InputFile::~InputFile() {
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

void InputFile::close() {
    if (::close(std::exchange(descriptor_, -1)) != 0 && errno != EINTR)
        throw FileError(FileError::Operation::read, errno, path_);
}

Bytes InputFile::read(std::size_t limit) {
    // With one byte of room beyond the expected size, the end of the file shows without another allocation.
    std::size_t capacity = std::min(limit, size_ + 1);
    std::shared_ptr<char[]> content = std::make_unique_for_overwrite<char[]>(capacity);
    std::size_t used = 0;
    while (used < limit) {
        if (used == capacity) {
            capacity = std::min(limit, capacity * 2 + smallestGrowth);
            std::shared_ptr<char[]> grown = std::make_unique_for_overwrite<char[]>(capacity);
            std::memcpy(grown.get(), content.get(), used);
            content = std::move(grown);
        }
        const ssize_t count = readSome(descriptor_, content.get() + used, capacity - used);
        if (count < 0)
            throw FileError(FileError::Operation::read, errno, path_);
        if (count == 0)
            break;
        used += static_cast<std::size_t>(count);
    }
    const char* const data = content.get();
    return {std::move(content), data, used};
}

} // namespace tavel
