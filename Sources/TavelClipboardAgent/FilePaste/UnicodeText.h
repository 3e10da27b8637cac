#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Unicode functions for file names, on scalar values. The character sets are those of the home platform, so
/// that a name is valid on every platform or on none. Any thread.
namespace tavel::unicode {

/// nullopt if the text is not well-formed UTF-8.
std::optional<std::u32string> fromUtf8(std::string_view text);

std::string toUtf8(std::u32string_view scalars);

/// The length in code units.
std::size_t lengthInUtf16(std::u32string_view scalars);

/// Spaces and tabs of all kinds (Foundation, CharacterSet.whitespaces).
bool isBlank(char32_t scalar);

/// Line and paragraph ends (Foundation, CharacterSet.newlines).
bool isNewline(char32_t scalar);

/// The general categories Cc and Cf.
bool isControl(char32_t scalar);

/// One scalar value for one: full mappings to several values are not used.
char32_t upperCase(char32_t scalar);

/// At most the first `count` characters as people count them: extended grapheme clusters (UAX 29).
std::u32string_view firstCharacters(std::u32string_view scalars, std::size_t count);

/// The text without the scalar values at both ends for which `isLeftOut` holds.
template <typename Predicate>
std::u32string_view trimmed(std::u32string_view scalars, Predicate isLeftOut) {
    while (!scalars.empty() && isLeftOut(scalars.front()))
        scalars.remove_prefix(1);
    while (!scalars.empty() && isLeftOut(scalars.back()))
        scalars.remove_suffix(1);
    return scalars;
}

} // namespace tavel::unicode
