#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

/// Tables that are made of the alphabet of base64 (RFC 4648, section 4).
namespace tavel::base64 {

inline constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// A table that vector instructions look up, with one byte for each value of four bits.
struct Lookup {
    std::uint8_t bytes[16];
};

constexpr std::size_t codeOf(char character) {
    return static_cast<unsigned char>(character);
}

constexpr std::uint8_t difference(std::size_t a, std::size_t b) {
    return static_cast<std::uint8_t>(a - b);
}

/// What makes a character of a number: at 0 for the numbers from 26 to 51, at 1 to 12 for those from 52 on,
/// and at 13 for those below 26.
inline constexpr Lookup encodingOffsets = [] {
    Lookup offsets{};
    offsets.bytes[13] = 'A';
    for (std::size_t value = 51; value < alphabet.size(); ++value)
        offsets.bytes[value - 51] = difference(codeOf(alphabet[value]), value);
    return offsets;
}();

/// What makes a number of a character, for each value of its upper four bits. The slash shares these with the
/// plus sign, and has the value below instead, which no character of the alphabet has.
inline constexpr Lookup decodingOffsets = [] {
    Lookup offsets{};
    for (std::size_t value = 0; value < alphabet.size(); ++value) {
        const auto character = codeOf(alphabet[value]);
        offsets.bytes[(character >> 4) - (character == '/' ? 1 : 0)] = difference(value, character);
    }
    return offsets;
}();

/// One bit for each value of the upper four bits. Where the letters lie, two values share a bit, because the
/// same lower bits are in the alphabet with both. All values without any character share a bit, too.
inline constexpr Lookup rowBits = [] {
    Lookup bits{};
    for (std::uint8_t& row : bits.bytes)
        row = 16;
    for (const char character : alphabet) {
        const auto row = codeOf(character) >> 4;
        bits.bytes[row] = static_cast<std::uint8_t>(1U << (row < 4 ? row - 2 : row % 2 + 2));
    }
    return bits;
}();

/// For each value of the lower four bits, the bits of the rows in which no character of the alphabet has it.
inline constexpr Lookup refusedBits = [] {
    Lookup bits{};
    for (std::size_t character = 0; character < 256; ++character) {
        if (alphabet.find(static_cast<char>(static_cast<unsigned char>(character))) == std::string_view::npos)
            bits.bytes[character & 15] =
                static_cast<std::uint8_t>(bits.bytes[character & 15] | rowBits.bytes[character >> 4]);
    }
    return bits;
}();

} // namespace tavel::base64
