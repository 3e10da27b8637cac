#pragma once

#include "Support/Base64Stream.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <span>

namespace tavel {

/// Splits the input of a descriptor into lines of up to 4 GiB, and decodes the base64 in a long line of JSON
/// as it arrives. So a line of 90 MB with a picture costs little more than reading it, and takes no more
/// memory than the picture. For one thread.
class LineReader {
public:
    /// Bytes behind each line that may be read but not written, for parsers that read ahead with SIMD.
    static constexpr std::size_t padding = 64;

    /// A longer line is skipped: the parser of JSON counts bytes in 32 bits.
    static constexpr std::size_t longestLineBytes = 0xFFFF'FF00;

    /// A payload has at least this many characters, or half as many if all are escaped slashes.
    static constexpr std::size_t shortestPayload = 64;

    /// A line is searched for a payload when it has this many bytes.
    static constexpr std::size_t longLineBytes = std::size_t{64} * 1024;

    /// A string of base64 that was taken out of a line.
    struct Payload {
        std::size_t offset; // in the line, where its quotation marks are left
        DecodedBase64 content;
    };

    struct Line {
        /// The line without its terminator (LF or CRLF). Valid until the next call of `next`. The caller may
        /// change these bytes.
        std::span<char> text;
        std::optional<Payload> payload;
    };

    /// Reads from `descriptor`, which the caller keeps open and closes. Of a payload with more than
    /// `longestPayload` bytes, keeps up to three bytes more than that. Lines of less than `searchedBytes`
    /// bytes have no payload; neither have those that arrive whole before they are searched.
    explicit LineReader(int descriptor, std::size_t longestPayload,
                        std::size_t searchedBytes = longLineBytes);
    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    /// Waits for the next line. The last line may lack its terminator. nullopt at the end of input and after
    /// a read error. Throws std::bad_alloc if there is no memory for the line; the next call tries again.
    ///
    /// At most one string of a line is taken out as its payload: the one that the line's first
    /// `searchedBytes` bytes end in, if all of it is base64. If only the beginning is, slashes in the line
    /// may have lost their backslash, which means the same in JSON.
    std::optional<Line> next();

    /// Reads to the end of the line that the next call of `next` would have given, without holding it.
    void skipLine();

private:
    class Buffer;

    bool fill();
    void dropReturnedLine();
    void makeRoom(std::size_t size);
    void startNextLine(std::size_t position);
    Line takeLine(std::size_t length, std::size_t terminatorLength);
    std::size_t lineBytes() const { return end_ - lineStart_ + takenCharacters_; }

    void searchPayload();
    void decodePayload();
    void putPayloadBack();

    int descriptor_;
    std::size_t longestPayload_;
    std::size_t searchedBytes_;
    std::unique_ptr<Buffer> buffer_;
    std::size_t lineStart_ = 0; // first byte that no returned line contains
    std::size_t scanned_ = 0;   // no line feed stands between lineStart_ and here
    std::size_t end_ = 0;       // behind the last byte read
    bool endOfInput_ = false;

    // Of the current line.
    bool isSearched_ = false;
    std::size_t payloadOffset_ = 0;      // in the line
    std::size_t takenCharacters_ = 0;    // of the payload
    std::optional<Base64Stream> stream_; // while characters of the payload arrive
    std::optional<Payload> payload_;     // when it has ended
};

} // namespace tavel
