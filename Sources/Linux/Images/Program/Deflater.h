#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace tavel {

/// Compresses pieces of a deflate stream (RFC 1951) that do not refer to each other, so that each can be
/// compressed on a thread of its own, with a deflater of its own. For one thread at a time.
class Deflater {
public:
    /// Allocates all the memory that it will need. Throws std::bad_alloc.
    Deflater();
    ~Deflater();
    Deflater(const Deflater&) = delete;
    Deflater& operator=(const Deflater&) = delete;

    /// The most bytes that a piece of that size can become.
    static constexpr std::size_t bound(std::size_t size) {
        // Bytes that cannot be compressed are stored in blocks, which have a head of five bytes. The rest is
        // room for what the library writes before it decides so.
        constexpr std::size_t largestStored = 65'535;
        return size + 5 * (size / largestStored + 1) + 1024;
    }

    /// Compresses a piece of up to 1 GiB, not empty. The result ends at the end of a byte, and with `isLast`
    /// the stream ends there. `target` has room for bound(piece.size()) bytes. Returns the number of bytes
    /// written; 0 if the library fails.
    std::size_t compress(std::span<const std::uint8_t> piece, bool isLast, std::uint8_t* target) noexcept;

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// The first two bytes of a zlib stream (RFC 1950): deflate, a window of 32 KiB, the fastest compression.
inline constexpr std::uint8_t zlibStart[] = {0x78, 0x01};

/// The checksum at the end of a zlib stream, with these bytes after those of `before`. It is 1 for no bytes.
std::uint32_t adler32(std::uint32_t before, std::span<const std::uint8_t> bytes);

/// The checksum of a PNG chunk.
std::uint32_t crc32(std::span<const std::uint8_t> bytes);

} // namespace tavel
