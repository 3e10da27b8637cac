#include "Mac/Utf16.h"

#include "Support/Text.h"

#include <utf8proc.h>

#include <array>
#include <cstddef>

namespace tavel {

namespace {

constexpr char32_t firstHighSurrogate = 0xD800;
constexpr char32_t firstLowSurrogate = 0xDC00;
constexpr char32_t afterSurrogates = 0xE000;
constexpr char32_t firstSupplementary = 0x10000; // the first character that takes two units
constexpr char32_t replacementCharacter = 0xFFFD;
constexpr char32_t surrogatesPerHalf = 0x400;

bool isHighSurrogate(char16_t unit) {
    return unit >= firstHighSurrogate && unit < firstLowSurrogate;
}

bool isLowSurrogate(char16_t unit) {
    return unit >= firstLowSurrogate && unit < afterSurrogates;
}

void append(std::u16string& units, char32_t character) {
    if (character < firstSupplementary) {
        units += static_cast<char16_t>(character);
        return;
    }
    const char32_t offset = character - firstSupplementary;
    units += static_cast<char16_t>(firstHighSurrogate + offset / surrogatesPerHalf);
    units += static_cast<char16_t>(firstLowSurrogate + offset % surrogatesPerHalf);
}

void append(std::string& text, char32_t character) {
    std::array<utf8proc_uint8_t, 4> encoded{};
    const auto size = utf8proc_encode_char(static_cast<utf8proc_int32_t>(character), encoded.data());
    text.append(reinterpret_cast<const char*>(encoded.data()), static_cast<std::size_t>(size));
}

} // namespace

std::optional<std::u16string> utf16FromUtf8(std::string_view text) {
    if (!isUtf8(text))
        return std::nullopt;
    std::u16string units;
    units.reserve(text.size());
    const auto* next = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
    const auto* const end = next + text.size();
    while (next != end) {
        utf8proc_int32_t character = 0;
        next += utf8proc_iterate(next, end - next, &character);
        append(units, static_cast<char32_t>(character));
    }
    return units;
}

std::string utf8FromUtf16(std::u16string_view units) {
    std::string text;
    text.reserve(units.size());
    while (!units.empty()) {
        const char16_t unit = units.front();
        char32_t character = unit;
        std::size_t length = 1;
        if (isHighSurrogate(unit) && units.size() > 1 && isLowSurrogate(units[1])) {
            character = firstSupplementary + (character - firstHighSurrogate) * surrogatesPerHalf +
                        (units[1] - firstLowSurrogate);
            length = 2;
        } else if (isHighSurrogate(unit) || isLowSurrogate(unit)) {
            character = replacementCharacter;
        }
        append(text, character);
        units.remove_prefix(length);
    }
    return text;
}

} // namespace tavel
