#include "Support/LineReader.h"

#include "Support/Throughput.h"

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
/// A buffer that outgrows this size gets `hugeCapacity` at once, enough for any usual line. Untouched memory
/// costs only addresses, and a line of 90 MB is copied once, while it is short.
constexpr std::size_t largeCapacity = std::size_t{4} << 20;
constexpr std::size_t hugeCapacity = std::size_t{256} << 20;
constexpr std::size_t largePageBytes = std::size_t{2} << 20;
constexpr std::size_t smallestRead = std::size_t{16} * 1024;
/// Bounds the input behind a long line, which is copied when the line takes the buffer with it.
constexpr std::size_t largestRead = std::size_t{256} * 1024;

/// Reads the available bytes and waits for at least one. 0 at the end of input and after an error.
std::size_t readSome(int descriptor, char* target, std::size_t room) {
    for (;;) {
        const ssize_t count = read(descriptor, target, room);
        if (count >= 0)
            return static_cast<std::size_t>(count);
        if (errno == EAGAIN || errno == EWOULDBLOCK) {
            // A process that shares the pipe may have set O_NONBLOCK on it.
            pollfd readable{descriptor, POLLIN, 0};
            if (poll(&readable, 1, -1) < 0 && errno != EINTR)
                return 0;
        } else if (errno != EINTR) {
            return 0;
        }
    }
}

} // namespace

class LineReader::Buffer {
public:
    Buffer() : bytes_(allocate(initialCapacity)), capacity_(initialCapacity) {}

    char* bytes() { return bytes_.get(); }
    std::size_t capacity() const { return capacity_; }

    /// Makes room for at least `capacity` bytes and keeps the first `used` bytes. Throws std::bad_alloc.
    void grow(std::size_t capacity, std::size_t used) {
        if (capacity_ >= hugeCapacity) {
            resize(capacity); // which moves pages: a copy of them would need their memory twice
            return;
        }
        if (capacity > largeCapacity)
            capacity = std::max(capacity, hugeCapacity);
        auto grown = allocate(capacity);
        std::memcpy(grown.get(), bytes_.get(), used);
        bytes_ = std::move(grown);
        capacity_ = capacity;
    }

    /// Changes the room to `capacity` bytes. They may move. Throws std::bad_alloc.
    void resize(std::size_t capacity) {
        char* const resized = static_cast<char*>(std::realloc(bytes_.get(), capacity + padding));
        if (resized == nullptr)
            throw std::bad_alloc();
        static_cast<void>(bytes_.release()); // realloc has kept or freed it
        bytes_.reset(resized);
        capacity_ = capacity;
    }

private:
    struct Free {
        void operator()(char* bytes) const { std::free(bytes); }
    };

    static std::unique_ptr<char, Free> allocate(std::size_t capacity) {
        const std::size_t alignment = capacity >= hugeCapacity ? largePageBytes : padding;
        const std::size_t size = (capacity + padding + alignment - 1) / alignment * alignment;
        std::unique_ptr<char, Free> bytes(static_cast<char*>(std::aligned_alloc(alignment, size)));
        if (bytes == nullptr)
            throw std::bad_alloc();
        if (capacity >= hugeCapacity)
            preferLargePages(bytes.get(), size);
        return bytes;
    }

    std::unique_ptr<char, Free> bytes_;
    std::size_t capacity_;
};

void LineReader::shrink(Buffer& buffer, std::size_t used) {
    try {
        buffer.resize(used);
    } catch (const std::bad_alloc&) {
        // It stays as large as it is.
    }
}

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
        if (end_ - lineStart_ > longestLineBytes) {
            skipLine();
        } else if (endOfInput_ || !fill()) {
            if (lineStart_ == end_)
                return std::nullopt;
            return takeLine(end_ - lineStart_, 0);
        }
    }
}

void LineReader::skipLine() {
    for (;;) {
        char* const bytes = buffer_->bytes();
        const void* const feed = std::memchr(bytes + scanned_, '\n', end_ - scanned_);
        if (feed != nullptr)
            lineStart_ = static_cast<std::size_t>(static_cast<const char*>(feed) - bytes) + 1;
        else
            lineStart_ = end_;
        end_ -= lineStart_;
        std::memmove(bytes, bytes + lineStart_, end_);
        std::memset(bytes + end_, 0, padding);
        lineStart_ = scanned_ = 0;
        if (buffer_->capacity() > largeCapacity)
            shrink(*buffer_, largeCapacity);
        if (feed != nullptr || endOfInput_ || !fill())
            return;
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
            if (buffer_->capacity() == initialCapacity)
                enlargePipe(descriptor_);
            buffer_->grow(buffer_->capacity() * 2, end_);
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
    const std::size_t next = lineStart_ + length + terminatorLength;
    Line line;
    if (length < ownedLineBytes) {
        line.text = {buffer_->bytes() + lineStart_, length};
        lineStart_ = scanned_ = next;
        return line;
    }

    // The line keeps the buffer. The input behind it moves to a new one. Whatever can throw comes first.
    const std::size_t rest = end_ - next;
    auto following = std::make_unique<Buffer>();
    if (rest > following->capacity())
        following->grow(rest, 0);
    const std::shared_ptr<Buffer> owner(std::make_shared<Buffer>(std::move(*buffer_)));
    std::memcpy(following->bytes(), owner->bytes() + next, rest);
    std::memset(following->bytes() + rest, 0, padding);
    shrink(*owner, lineStart_ + length); // many such lines may wait
    line.text = {owner->bytes() + lineStart_, length};
    line.owner = owner;
    buffer_ = std::move(following);
    lineStart_ = scanned_ = 0;
    end_ = rest;
    return line;
}

} // namespace tavel
