#include "TavelClipboardAgent/FilePaste/UnicodeText.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>

namespace tavel::unicode {

namespace {

struct Range {
    char32_t first;
    char32_t last;
};

constexpr std::array blanks{
    Range{0x09, 0x09},     Range{0x20, 0x20},     Range{0xA0, 0xA0},     Range{0x1680, 0x1680},
    Range{0x2000, 0x200B}, Range{0x202F, 0x202F}, Range{0x205F, 0x205F}, Range{0x3000, 0x3000},
};

constexpr std::array newlines{
    Range{0x0A, 0x0D},
    Range{0x85, 0x85},
    Range{0x2028, 0x2029},
};

template <std::size_t count>
bool isIn(const std::array<Range, count>& ranges, char32_t scalar) {
    return std::ranges::any_of(
        ranges, [scalar](const Range& range) { return scalar >= range.first && scalar <= range.last; });
}

constexpr char32_t firstSupplementary = 0x10000;

utf8proc_int32_t codepoint(char32_t scalar) {
    return static_cast<utf8proc_int32_t>(scalar);
}

} // namespace

std::optional<std::u32string> fromUtf8(std::string_view text) {
    std::u32string scalars;
    while (!text.empty()) {
        utf8proc_int32_t scalar = 0;
        const auto length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                             static_cast<utf8proc_ssize_t>(text.size()), &scalar);
        if (length <= 0)
            return std::nullopt;
        scalars.push_back(static_cast<char32_t>(scalar));
        text.remove_prefix(static_cast<std::size_t>(length));
    }
    return scalars;
}

std::string toUtf8(std::u32string_view scalars) {
    std::string text;
    for (const char32_t scalar : scalars) {
        std::array<utf8proc_uint8_t, 4> bytes{};
        const auto length = utf8proc_encode_char(codepoint(scalar), bytes.data());
        text.append(reinterpret_cast<const char*>(bytes.data()), static_cast<std::size_t>(length));
    }
    return text;
}

std::size_t lengthInUtf16(std::u32string_view scalars) {
    const auto pairs =
        std::ranges::count_if(scalars, [](char32_t scalar) { return scalar >= firstSupplementary; });
    return scalars.size() + static_cast<std::size_t>(pairs);
}

bool isBlank(char32_t scalar) {
    return isIn(blanks, scalar);
}

bool isNewline(char32_t scalar) {
    return isIn(newlines, scalar);
}

bool isControl(char32_t scalar) {
    const utf8proc_category_t category = utf8proc_category(codepoint(scalar));
    return category == UTF8PROC_CATEGORY_CC || category == UTF8PROC_CATEGORY_CF;
}

char32_t upperCase(char32_t scalar) {
    return static_cast<char32_t>(utf8proc_toupper(codepoint(scalar)));
}

std::u32string_view firstCharacters(std::u32string_view scalars, std::size_t count) {
    utf8proc_int32_t state = 0;
    for (std::size_t i = 1; i < scalars.size(); ++i) {
        if (utf8proc_grapheme_break_stateful(codepoint(scalars[i - 1]), codepoint(scalars[i]), &state) &&
            --count == 0)
            return scalars.substr(0, i);
    }
    return scalars;
}

} // namespace tavel::unicode
