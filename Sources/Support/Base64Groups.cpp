#include "Support/Base64Groups.h"

#include "Support/Base64Alphabet.h"
#include "Support/Base64Blocks.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace tavel {

namespace {

using base64::alphabet;

/// Asks the processor once, at the first use.
const Base64Blocks& bestBlocks() {
    static const Base64Blocks& best =
        *std::ranges::find_if(base64Blocks(), [](const Base64Blocks& blocks) { return blocks.runHere(); });
    return best;
}

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

std::uint32_t octet(char c) {
    return static_cast<unsigned char>(c);
}

std::uint32_t sextet(char c, std::size_t position) {
    return decodingTables[position][static_cast<unsigned char>(c)];
}

} // namespace

char* encodeBase64Groups(const Base64Blocks& blocks, std::string_view bytes, char* out) {
    const std::size_t taken = blocks.encode(bytes.data(), bytes.size(), out);
    out += taken / 3 * 4;
    const char* const end = bytes.data() + bytes.size() / 3 * 3;
    for (const char* in = bytes.data() + taken; in != end; in += 3, out += 4) {
        const std::uint32_t bits = octet(in[0]) << 16 | octet(in[1]) << 8 | octet(in[2]);
        std::memcpy(out, encodingPairs[bits >> 12].data(), 2);
        std::memcpy(out + 2, encodingPairs[bits & 0xFFF].data(), 2);
    }
    return out;
}

std::size_t decodeBase64Groups(const Base64Blocks& blocks, std::string_view text, char* out) {
    const std::size_t taken = blocks.decode(text.data(), text.size(), out);
    out += taken / 4 * 3;
    const char* const end = text.data() + text.size() / 4 * 4;
    const char* in = text.data() + taken;
    for (; in != end; in += 4, out += 3) {
        const std::uint32_t bits = sextet(in[0], 0) | sextet(in[1], 1) | sextet(in[2], 2) | sextet(in[3], 3);
        if ((bits & invalid) != 0)
            break;
        out[0] = static_cast<char>(bits >> 16);
        out[1] = static_cast<char>(bits >> 8);
        out[2] = static_cast<char>(bits);
    }
    return static_cast<std::size_t>(in - text.data());
}

CopiedText copyWithoutSlashEscapes(const Base64Blocks& blocks, std::string_view text, char* out) {
    CopiedText copied = blocks.copyWithoutSlashEscapes(text.data(), text.size(), out);
    while (copied.taken < text.size() && text[copied.taken] != '"') {
        if (text[copied.taken] == '\\') {
            if (copied.taken + 1 == text.size() || text[copied.taken + 1] != '/')
                break;
            ++copied.taken;
        }
        out[copied.written++] = text[copied.taken++];
    }
    return copied;
}

char* copyWithSlashEscapes(const Base64Blocks& blocks, std::string_view text, char* out) {
    const CopiedText copied = blocks.copyWithSlashEscapes(text.data(), text.size(), out);
    out += copied.written;
    for (const char c : text.substr(copied.taken)) {
        if (c == '/')
            *out++ = '\\';
        *out++ = c;
    }
    return out;
}

char* encodeBase64Groups(std::string_view bytes, char* out) {
    return encodeBase64Groups(bestBlocks(), bytes, out);
}

std::size_t decodeBase64Groups(std::string_view text, char* out) {
    return decodeBase64Groups(bestBlocks(), text, out);
}

CopiedText copyWithoutSlashEscapes(std::string_view text, char* out) {
    return copyWithoutSlashEscapes(bestBlocks(), text, out);
}

char* copyWithSlashEscapes(std::string_view text, char* out) {
    return copyWithSlashEscapes(bestBlocks(), text, out);
}

} // namespace tavel
