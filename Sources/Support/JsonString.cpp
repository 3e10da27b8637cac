#include "Support/JsonString.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace tavel {

namespace {

std::optional<std::uint32_t> hexQuad(std::string_view digits) {
    if (digits.size() < 4)
        return std::nullopt;
    std::uint32_t value = 0;
    for (const char c : digits.substr(0, 4)) {
        value <<= 4;
        if (c >= '0' && c <= '9')
            value |= static_cast<std::uint32_t>(c - '0');
        else if (c >= 'a' && c <= 'f')
            value |= static_cast<std::uint32_t>(c - 'a' + 10);
        else if (c >= 'A' && c <= 'F')
            value |= static_cast<std::uint32_t>(c - 'A' + 10);
        else
            return std::nullopt;
    }
    return value;
}

/// Removes the digits of one \u escape, or of the two escapes of a surrogate pair, from the front of `rest`.
std::optional<std::uint32_t> takeCodePoint(std::string_view& rest) {
    const auto unit = hexQuad(rest);
    if (!unit || (*unit >= 0xDC00 && *unit <= 0xDFFF))
        return std::nullopt;
    rest.remove_prefix(4);
    if (*unit < 0xD800 || *unit > 0xDBFF)
        return unit;
    if (!rest.starts_with("\\u"))
        return std::nullopt;
    const auto low = hexQuad(rest.substr(2));
    if (!low || *low < 0xDC00 || *low > 0xDFFF)
        return std::nullopt;
    rest.remove_prefix(6);
    return 0x10000 + ((*unit - 0xD800) << 10) + (*low - 0xDC00);
}

char* appendUtf8(char* out, std::uint32_t codePoint) {
    const auto put = [&out](std::uint32_t octet) { *out++ = static_cast<char>(octet); };
    const auto continuation = [codePoint](unsigned shift) { return 0x80 | ((codePoint >> shift) & 0x3F); };
    if (codePoint < 0x80) {
        put(codePoint);
    } else if (codePoint < 0x800) {
        put(0xC0 | (codePoint >> 6));
        put(continuation(0));
    } else if (codePoint < 0x10000) {
        put(0xE0 | (codePoint >> 12));
        put(continuation(6));
        put(continuation(0));
    } else {
        put(0xF0 | (codePoint >> 18));
        put(continuation(12));
        put(continuation(6));
        put(continuation(0));
    }
    return out;
}

/// The character that a short escape stands for; a zero byte if `c` makes none. No short escape stands for
/// the zero byte.
char shortEscape(char c) {
    switch (c) {
    case '"':
    case '\\':
    case '/':
        return c;
    case 'b':
        return '\b';
    case 'f':
        return '\f';
    case 'n':
        return '\n';
    case 'r':
        return '\r';
    case 't':
        return '\t';
    default:
        return '\0';
    }
}

} // namespace

std::optional<std::string_view> unescapeJsonString(std::span<char> text) {
    char* out = text.data();
    std::string_view rest(text.data(), text.size());
    for (;;) {
        const std::size_t plain = std::min(rest.find('\\'), rest.size());
        if (out != rest.data())
            std::memmove(out, rest.data(), plain);
        out += plain;
        rest.remove_prefix(plain);
        if (rest.empty())
            return std::string_view(text.data(), static_cast<std::size_t>(out - text.data()));
        if (rest.size() < 2)
            return std::nullopt;
        const char kind = rest[1];
        rest.remove_prefix(2);
        if (kind == 'u') {
            const auto codePoint = takeCodePoint(rest);
            if (!codePoint)
                return std::nullopt;
            out = appendUtf8(out, *codePoint);
        } else if (const char character = shortEscape(kind)) {
            *out++ = character;
        } else {
            return std::nullopt;
        }
    }
}

} // namespace tavel
