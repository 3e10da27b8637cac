#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>

namespace tavel {

/// Splits the input of a descriptor into lines of up to 4 GiB. It scans each byte once and doubles its
/// buffer, so a line of 90 MB costs little more than reading it. For one thread.
class LineReader {
public:
    /// Bytes behind each line that may be read but not written, for parsers that read ahead with SIMD.
    static constexpr std::size_t padding = 64;

    /// A line of at least this many bytes has a buffer of its own, see Line.
    static constexpr std::size_t ownedLineBytes = std::size_t{64} * 1024;

    /// A longer line is skipped: the parser of JSON counts bytes in 32 bits.
    static constexpr std::size_t longestLineBytes = 0xFFFF'FF00;

    struct Line {
        /// The line without its terminator (LF or CRLF). The caller may change these bytes.
        std::span<char> text;
        /// Keeps the text of a long line alive. Null for a short line, whose text is valid until the next
        /// call of `next`.
        std::shared_ptr<void> owner;
    };

    /// Reads from `descriptor`, which the caller keeps open and closes.
    explicit LineReader(int descriptor);
    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    /// Waits for the next line. The last line may lack its terminator. nullopt at the end of input and after
    /// a read error. Throws std::bad_alloc if there is no memory for the line; the next call tries again.
    std::optional<Line> next();

    /// Reads to the end of the line that the next call of `next` would have given, without holding it.
    void skipLine();

private:
    class Buffer;

    static void shrink(Buffer& buffer, std::size_t used);
    bool fill();
    Line takeLine(std::size_t length, std::size_t terminatorLength);

    int descriptor_;
    std::unique_ptr<Buffer> buffer_;
    std::size_t lineStart_ = 0; // first byte that no returned line contains
    std::size_t scanned_ = 0;   // no line feed stands between lineStart_ and here
    std::size_t end_ = 0;       // behind the last byte read
    bool endOfInput_ = false;
};

} // namespace tavel
