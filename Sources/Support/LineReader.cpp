#include "Support/LineReader.h"

#include "Support/Throughput.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

namespace tavel {

namespace {

constexpr std::size_t initialCapacity = std::size_t{64} * 1024;
constexpr std::size_t smallestRead = std::size_t{16} * 1024;
/// While a payload arrives, its characters are decoded from the second-level cache.
constexpr std::size_t largestRead = std::size_t{256} * 1024;

/// Reads the available bytes and waits for at least one. 0 at the end of input and after an error.
std::size_t readAvailable(int descriptor, char* target, std::size_t room) {
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

/// Where the characters of a string begin that does not end in the text. Quotation marks alone tell, as a
/// backslash outside of strings makes the line malformed, whatever it is taken for.
std::optional<std::size_t> findOpenString(std::string_view text) {
    std::optional<std::size_t> start;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '"')
            start = start ? std::nullopt : std::optional(i + 1);
        else if (text[i] == '\\' && start)
            ++i; // also skips an escaped quotation mark
    }
    return start;
}

} // namespace

/// Its size is in `capacity()`, and `padding` bytes lie behind that.
class LineReader::Buffer {
public:
    Buffer() { resize(initialCapacity); }

    char* bytes() { return bytes_.get(); }
    std::size_t capacity() const { return capacity_; }

    /// Keeps as many bytes as before or as fit. They may move, a large buffer without a copy. Throws
    /// std::bad_alloc and leaves the buffer unchanged.
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

    std::unique_ptr<char, Free> bytes_;
    std::size_t capacity_ = 0;
};

LineReader::LineReader(int descriptor, std::size_t longestPayload, std::size_t searchedBytes)
    : descriptor_(descriptor), longestPayload_(longestPayload), searchedBytes_(searchedBytes),
      buffer_(std::make_unique<Buffer>()) {}

LineReader::~LineReader() = default;

std::optional<LineReader::Line> LineReader::next() {
    dropReturnedLine();
    for (;;) {
        if (stream_)
            decodePayload();
        if (!stream_) {
            char* const bytes = buffer_->bytes();
            if (const void* feed = std::memchr(bytes + scanned_, '\n', end_ - scanned_)) {
                const auto position = static_cast<std::size_t>(static_cast<const char*>(feed) - bytes);
                const bool carriageReturn = position > lineStart_ && bytes[position - 1] == '\r';
                return takeLine(position - lineStart_ - (carriageReturn ? 1 : 0), carriageReturn ? 2 : 1);
            }
            scanned_ = end_;
            if (!isSearched_ && end_ - lineStart_ >= searchedBytes_) {
                searchPayload();
                continue;
            }
        }
        if (lineBytes() > longestLineBytes) {
            skipLine();
        } else if (endOfInput_ || !fill()) {
            if (stream_)
                putPayloadBack();
            else
                return lineStart_ == end_ ? std::nullopt : std::optional(takeLine(end_ - lineStart_, 0));
        }
    }
}

void LineReader::skipLine() {
    for (;;) {
        const char* const bytes = buffer_->bytes();
        const void* const feed = std::memchr(bytes + scanned_, '\n', end_ - scanned_);
        startNextLine(feed == nullptr ? end_
                                      : static_cast<std::size_t>(static_cast<const char*>(feed) - bytes) + 1);
        dropReturnedLine();
        if (feed != nullptr || endOfInput_ || !fill())
            return;
    }
}

/// Gives the memory of a long line back.
void LineReader::dropReturnedLine() {
    if (buffer_->capacity() == initialCapacity || end_ - lineStart_ > initialCapacity / 2)
        return;
    std::memmove(buffer_->bytes(), buffer_->bytes() + lineStart_, end_ - lineStart_ + padding);
    scanned_ -= lineStart_;
    end_ -= lineStart_;
    lineStart_ = 0;
    try {
        buffer_->resize(initialCapacity);
    } catch (const std::bad_alloc&) {
        // It stays as large as it is.
    }
}

bool LineReader::fill() {
    makeRoom(stream_ ? largestRead : smallestRead);
    const std::size_t room = std::min(buffer_->capacity() - end_, largestRead);
    const std::size_t count = readAvailable(descriptor_, buffer_->bytes() + end_, room);
    std::memset(buffer_->bytes() + end_ + count, 0, padding);
    end_ += count;
    endOfInput_ = count == 0;
    return !endOfInput_;
}

/// Makes room for `size` bytes behind the last one.
void LineReader::makeRoom(std::size_t size) {
    if (lineStart_ == end_)
        lineStart_ = scanned_ = end_ = 0;
    if (buffer_->capacity() - end_ >= size)
        return;
    if (lineStart_ > buffer_->capacity() / 2) {
        std::memmove(buffer_->bytes(), buffer_->bytes() + lineStart_, end_ - lineStart_);
        end_ -= lineStart_;
        scanned_ -= lineStart_;
        lineStart_ = 0;
    }
    if (buffer_->capacity() - end_ >= size)
        return;
    if (buffer_->capacity() == initialCapacity)
        enlargePipe(descriptor_);
    buffer_->resize(std::max(buffer_->capacity() * 2, end_ + size));
}

void LineReader::startNextLine(std::size_t position) {
    lineStart_ = scanned_ = position;
    isSearched_ = false;
    takenCharacters_ = 0;
    stream_.reset();
    payload_.reset();
}

LineReader::Line LineReader::takeLine(std::size_t length, std::size_t terminatorLength) {
    Line line{{buffer_->bytes() + lineStart_, length}, std::move(payload_)};
    startNextLine(lineStart_ + length + terminatorLength);
    return line;
}

/// Starts to decode the string that the line so far ends in, if it may be a payload.
void LineReader::searchPayload() {
    isSearched_ = true;
    const std::string_view line(buffer_->bytes() + lineStart_, end_ - lineStart_);
    const auto start = findOpenString(line);
    if (!start || line.size() - *start < shortestPayload)
        return;
    try {
        stream_.emplace(longestPayload_);
    } catch (const std::bad_alloc&) {
        return; // there may be memory for the line
    }
    payloadOffset_ = *start;
    scanned_ = lineStart_ + *start;
}

/// Takes the characters that have arrived out of the line.
void LineReader::decodePayload() {
    char* const position = buffer_->bytes() + scanned_;
    const Base64Stream::Progress progress = stream_->take({position, end_ - scanned_});
    takenCharacters_ += progress.taken;
    end_ -= progress.taken;
    std::memmove(position, position + progress.taken, end_ - scanned_ + padding);
    if (progress.state == Base64Stream::State::ended) {
        payload_ = {payloadOffset_, std::move(*stream_).finish()};
        stream_.reset();
    } else if (progress.state == Base64Stream::State::refused) {
        putPayloadBack();
    }
}

void LineReader::putPayloadBack() {
    const std::size_t size = stream_->takenSize();
    makeRoom(size);
    char* const position = buffer_->bytes() + scanned_;
    std::memmove(position + size, position, end_ - scanned_ + padding);
    stream_->writeTaken(position);
    scanned_ += size;
    end_ += size;
    takenCharacters_ = 0;
    stream_.reset();
}

} // namespace tavel
