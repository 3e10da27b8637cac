#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// What names need of Unicode, over scalar values. The sets are the home platform's character sets, so that a
/// name is valid on every platform or on none.
namespace tavel::unicode {

/// Nothing if it is not well-formed UTF-8.
std::optional<std::u32string> fromUtf8(std::string_view text);

std::string toUtf8(std::u32string_view scalars);

/// In code units.
std::size_t lengthInUtf16(std::u32string_view scalars);

/// Spaces and tabs of all kinds (Foundation, CharacterSet.whitespaces).
bool isBlank(char32_t scalar);

/// What ends a line (Foundation, CharacterSet.newlines).
bool isNewline(char32_t scalar);

/// The categories Cc and Cf.
bool isControl(char32_t scalar);

/// One scalar value for one: mappings to several, such as that of ß, are left out or made one.
char32_t upperCase(char32_t scalar);

/// So many characters as people count them, at the most: extended grapheme clusters (Unicode annex 29).
std::u32string_view firstCharacters(std::u32string_view scalars, std::size_t count);

/// Without what `isLeftOut` says at both ends.
template <typename Predicate>
std::u32string_view trimmed(std::u32string_view scalars, Predicate isLeftOut) {
    while (!scalars.empty() && isLeftOut(scalars.front()))
        scalars.remove_prefix(1);
    while (!scalars.empty() && isLeftOut(scalars.back()))
        scalars.remove_suffix(1);
    return scalars;
}

} // namespace tavel::unicode
