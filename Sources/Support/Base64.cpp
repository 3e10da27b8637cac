#include "Support/Base64.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>

namespace tavel {

namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The two characters of each twelve-bit group, so that one look-up gives both.
constexpr auto encodingPairs = [] {
    std::array<std::array<char, 2>, 4096> pairs{};
    for (std::size_t group = 0; group < pairs.size(); ++group)
        pairs[group] = {alphabet[group >> 6], alphabet[group & 63]};
    return pairs;
}();

constexpr std::uint32_t invalid = 0x80000000;

/// For each of four positions, the character's six bits where they stand in the 24-bit group.
constexpr auto decodingTables = [] {
    std::array<std::array<std::uint32_t, 256>, 4> tables{};
    for (auto& table : tables)
        table.fill(invalid);
    for (std::uint32_t value = 0; value < alphabet.size(); ++value) {
        const auto character = static_cast<unsigned char>(alphabet[value]);
        for (std::uint32_t position = 0; position < 4; ++position)
            tables[position][character] = value << (18 - 6 * position);
    }
    return tables;
}();

std::uint32_t octetAt(std::string_view bytes, std::size_t index) {
    return static_cast<unsigned char>(bytes[index]);
}

std::uint32_t sextet(char c, std::size_t position) {
    return decodingTables[position][static_cast<unsigned char>(c)];
}

/// Encodes `groups` groups of three bytes. Returns the end of the output.
char* encodeGroups(const char* bytes, std::size_t groups, char* out) {
    for (std::size_t i = 0; i < groups; ++i, bytes += 3, out += 4) {
        const std::string_view group(bytes, 3);
        const std::uint32_t bits = octetAt(group, 0) << 16 | octetAt(group, 1) << 8 | octetAt(group, 2);
        std::memcpy(out, encodingPairs[bits >> 12].data(), 2);
        std::memcpy(out + 2, encodingPairs[bits & 0xFFF].data(), 2);
    }
    return out;
}

void appendReplacingSlashes(std::string& text, std::string_view encoded, std::string_view slash) {
    for (;;) {
        const std::size_t plain = std::min(encoded.find('/'), encoded.size());
        text.append(encoded.substr(0, plain));
        if (plain == encoded.size())
            return;
        text.append(slash);
        encoded.remove_prefix(plain + 1);
    }
}

/// Decodes whole groups of four characters. False if a character is outside the alphabet.
bool decodeGroups(const char* text, std::size_t groups, char* out) {
    std::uint32_t seen = 0;
    for (std::size_t i = 0; i < groups; ++i, text += 4, out += 3) {
        const std::uint32_t bits =
            sextet(text[0], 0) | sextet(text[1], 1) | sextet(text[2], 2) | sextet(text[3], 3);
        seen |= bits;
        out[0] = static_cast<char>(bits >> 16);
        out[1] = static_cast<char>(bits >> 8);
        out[2] = static_cast<char>(bits);
    }
    return (seen & invalid) == 0;
}

/// The parts of a base64 text.
struct Shape {
    std::string_view text;    // without the padding
    std::size_t groups;       // whole groups of four characters
    std::size_t decodedBytes; // of the whole text
};

/// nullopt if no bytes have an encoding of this length or with this much padding.
std::optional<Shape> shapeOf(std::string_view text) {
    const std::size_t missing = (4 - text.size() % 4) % 4;
    const std::size_t padded = text.size() + missing;
    while (text.ends_with('='))
        text.remove_suffix(1);
    const std::size_t padding = padded - text.size();
    if (padding > 2) // a text of padding alone has four characters of it
        return std::nullopt;
    const std::size_t groups = text.size() / 4;
    const std::size_t rest = text.size() % 4;
    return Shape{text, groups, groups * 3 + (rest == 0 ? 0 : rest - 1)};
}

/// Decodes to `out`, which may be the beginning of the text itself: a byte is written only after its
/// characters were read. False if a character is outside the alphabet.
bool decodeTo(const Shape& shape, char* out) {
    const std::string_view rest = shape.text.substr(shape.groups * 4);
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < rest.size(); ++i)
        bits |= sextet(rest[i], i);
    if ((bits & invalid) != 0 || !decodeGroups(shape.text.data(), shape.groups, out))
        return false;
    if (!rest.empty())
        out[shape.groups * 3] = static_cast<char>(bits >> 16);
    if (rest.size() == 3)
        out[shape.groups * 3 + 1] = static_cast<char>(bits >> 8);
    return true;
}

} // namespace

void appendBase64(std::string& text, std::string_view bytes, std::string_view slash) {
    // Pieces on the stack keep the search for slashes in the first-level cache.
    constexpr std::size_t groupsPerPiece = 1024;
    std::array<char, groupsPerPiece * 4> piece{};
    text.reserve(text.size() + bytes.size() / 3 * 4 + bytes.size() / 32 + 4);
    std::size_t groups = bytes.size() / 3;
    const char* position = bytes.data();
    while (groups > 0) {
        const std::size_t now = std::min(groups, groupsPerPiece);
        const char* const end = encodeGroups(position, now, piece.data());
        appendReplacingSlashes(text, {piece.data(), end}, slash);
        position += now * 3;
        groups -= now;
    }

    const std::string_view rest = bytes.substr(bytes.size() / 3 * 3);
    if (rest.empty())
        return;
    const std::uint32_t bits = octetAt(rest, 0) << 16 | (rest.size() > 1 ? octetAt(rest, 1) << 8 : 0);
    std::memcpy(piece.data(), encodingPairs[bits >> 12].data(), 2);
    std::memcpy(piece.data() + 2, encodingPairs[bits & 0xFFF].data(), 2);
    appendReplacingSlashes(text, {piece.data(), rest.size() + 1}, slash);
}

std::optional<Bytes> decodeBase64(std::string_view text) {
    const auto shape = shapeOf(text);
    if (!shape)
        return std::nullopt;
    std::shared_ptr<char[]> decoded = std::make_unique_for_overwrite<char[]>(shape->decodedBytes);
    char* const out = decoded.get();
    if (!decodeTo(*shape, out))
        return std::nullopt;
    return Bytes(std::move(decoded), out, shape->decodedBytes);
}

Base64Text Base64Text::copyOf(std::string_view text) {
    auto owner = std::make_shared<std::string>(text);
    const std::span<char> characters(*owner);
    return {std::move(owner), characters};
}

std::optional<Bytes> Base64Text::decode() && {
    const auto shape = shapeOf(view());
    if (!shape || !decodeTo(*shape, characters_.data()))
        return std::nullopt;
    return Bytes(std::move(owner_), characters_.data(), shape->decodedBytes);
}

} // namespace tavel
