#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>

namespace tavel {

/// Splits a descriptor's bytes into lines of any length. Each byte is looked at once, and the buffer doubles,
/// so a line of 90 MB costs little more than reading it. Used by one thread.
class LineReader {
public:
    /// Bytes that may be read (not written) behind each line: what a SIMD reader of the line looks ahead.
    static constexpr std::size_t padding = 64;

    /// Lines of at least this many bytes come in a buffer of their own, see Line.
    static constexpr std::size_t ownedLineBytes = std::size_t{64} * 1024;

    struct Line {
        /// The line without its terminator (LF or CRLF). The reader of the line may change these bytes.
        std::span<char> text;
        /// For a long line: keeps `text` alive for as long as it is held. Empty for a short one, whose bytes
        /// last only until the next call of `next`.
        std::shared_ptr<void> owner;
    };

    /// Reads from `descriptor`, which stays the caller's.
    explicit LineReader(int descriptor);
    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    /// Waits for the next line. Nothing at the end of input, and a read error counts as the end; a last line
    /// without a terminator is a line.
    std::optional<Line> next();

private:
    class Buffer;

    bool fill();
    Line takeLine(std::size_t length, std::size_t terminatorLength);

    int descriptor_;
    std::unique_ptr<Buffer> buffer_;
    std::size_t lineStart_ = 0; // the first byte not handed out
    std::size_t scanned_ = 0;   // bytes before it are known to hold no line feed
    std::size_t end_ = 0;       // behind the last byte read
    bool endOfInput_ = false;
};

} // namespace tavel
