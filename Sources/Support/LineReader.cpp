#include "Support/LineReader.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>

namespace tavel {

namespace {

constexpr std::size_t initialCapacity = std::size_t{64} * 1024;
constexpr std::size_t smallestRead = std::size_t{16} * 1024;
/// Bounds what stands behind a long line when that line leaves with the buffer, and so has to be copied.
constexpr std::size_t largestRead = std::size_t{256} * 1024;

/// Reads what is there, waiting for at least one byte. 0 at the end of input, and after an error.
std::size_t readSome(int descriptor, char* target, std::size_t room) {
    for (;;) {
        const ssize_t count = read(descriptor, target, room);
        if (count >= 0)
            return static_cast<std::size_t>(count);
        if (errno == EAGAIN || errno == EWOULDBLOCK) {
            // Whoever shares the pipe may have set O_NONBLOCK on it.
            pollfd readable{descriptor, POLLIN, 0};
            if (poll(&readable, 1, -1) < 0 && errno != EINTR)
                return 0;
        } else if (errno != EINTR) {
            return 0;
        }
    }
}

} // namespace

/// Grows with realloc, because that moves the pages of a large buffer instead of copying them.
class LineReader::Buffer {
public:
    Buffer() { grow(initialCapacity); }

    ~Buffer() { std::free(bytes_); }

    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    char* bytes() { return bytes_; }

    std::size_t capacity() const { return capacity_; }

    void grow(std::size_t capacity) {
        void* grown = std::realloc(bytes_, capacity + padding);
        if (grown == nullptr)
            throw std::bad_alloc();
        bytes_ = static_cast<char*>(grown);
        capacity_ = capacity;
        // What stands there is never taken for text, but must not be uninitialised when it is looked at.
        std::memset(bytes_ + capacity, 0, padding);
    }

private:
    char* bytes_ = nullptr;
    std::size_t capacity_ = 0;
};

LineReader::LineReader(int descriptor) : descriptor_(descriptor), buffer_(std::make_unique<Buffer>()) {}

LineReader::~LineReader() = default;

std::optional<LineReader::Line> LineReader::next() {
    for (;;) {
        char* const bytes = buffer_->bytes();
        if (const void* feed = std::memchr(bytes + scanned_, '\n', end_ - scanned_)) {
            const auto position = static_cast<std::size_t>(static_cast<const char*>(feed) - bytes);
            const bool carriageReturn = position > lineStart_ && bytes[position - 1] == '\r';
            return takeLine(position - lineStart_ - (carriageReturn ? 1 : 0), carriageReturn ? 2 : 1);
        }
        scanned_ = end_;
        if (endOfInput_ || !fill()) {
            if (lineStart_ == end_)
                return std::nullopt;
            return takeLine(end_ - lineStart_, 0);
        }
    }
}

bool LineReader::fill() {
    if (lineStart_ == end_) {
        lineStart_ = scanned_ = end_ = 0;
    } else if (buffer_->capacity() - end_ < smallestRead) {
        if (lineStart_ > buffer_->capacity() / 2) {
            std::memmove(buffer_->bytes(), buffer_->bytes() + lineStart_, end_ - lineStart_);
            end_ -= lineStart_;
            scanned_ -= lineStart_;
            lineStart_ = 0;
        } else {
            buffer_->grow(buffer_->capacity() * 2);
        }
    }
    const std::size_t room = std::min(buffer_->capacity() - end_, largestRead);
    const std::size_t count = readSome(descriptor_, buffer_->bytes() + end_, room);
    std::memset(buffer_->bytes() + end_ + count, 0, padding);
    end_ += count;
    endOfInput_ = count == 0;
    return !endOfInput_;
}

LineReader::Line LineReader::takeLine(std::size_t length, std::size_t terminatorLength) {
    Line line{{buffer_->bytes() + lineStart_, length}, nullptr};
    lineStart_ += length + terminatorLength;
    scanned_ = lineStart_;
    if (length < ownedLineBytes)
        return line;

    // The line leaves with the buffer; what was read behind it moves to a new one.
    std::shared_ptr<Buffer> owner = std::move(buffer_);
    const std::size_t rest = end_ - lineStart_;
    buffer_ = std::make_unique<Buffer>();
    if (rest > buffer_->capacity())
        buffer_->grow(rest);
    std::memcpy(buffer_->bytes(), owner->bytes() + lineStart_, rest);
    std::memset(buffer_->bytes() + rest, 0, padding);
    lineStart_ = scanned_ = 0;
    end_ = rest;
    line.owner = std::move(owner);
    return line;
}

} // namespace tavel
