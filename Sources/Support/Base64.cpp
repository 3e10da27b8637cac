#include "Support/Base64.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>

namespace tavel {

namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The two characters of each twelve-bit group: one look-up for two characters.
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

/// Whole groups of three bytes only. Gives the end of what was written.
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

/// Decodes whole groups of four characters. False if one is outside the alphabet.
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

} // namespace

void appendBase64(std::string& text, std::string_view bytes, std::string_view slash) {
    // Encoded piece by piece on the stack, so that the slashes are looked for in the nearest cache.
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
    const std::size_t missing = (4 - text.size() % 4) % 4;
    const std::size_t padded = text.size() + missing;
    while (text.ends_with('='))
        text.remove_suffix(1);
    const std::size_t padding = padded - text.size();
    if (padding > 2) // also where only padding stands: it would have to be four of them
        return std::nullopt;

    const std::size_t groups = text.size() / 4;
    const std::string_view rest = text.substr(groups * 4);
    const std::size_t size = groups * 3 + (rest.empty() ? 0 : rest.size() - 1);
    std::shared_ptr<char[]> decoded = std::make_unique_for_overwrite<char[]>(size);
    char* const out = decoded.get();
    if (!decodeGroups(text.data(), groups, out))
        return std::nullopt;
    if (!rest.empty()) {
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < rest.size(); ++i)
            bits |= sextet(rest[i], i);
        if ((bits & invalid) != 0)
            return std::nullopt;
        out[groups * 3] = static_cast<char>(bits >> 16);
        if (rest.size() == 3)
            out[groups * 3 + 1] = static_cast<char>(bits >> 8);
    }
    return Bytes(std::move(decoded), out, size);
}

} // namespace tavel
