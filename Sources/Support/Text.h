#pragma once

#include <algorithm>
#include <string_view>

namespace tavel {

/// Whether the bytes are well-formed UTF-8 (Unicode 15, table 3-7: no surrogates, no overlong forms, nothing
/// above U+10FFFF). The empty text is.
bool isUtf8(std::string_view bytes);

/// The text without the beginning of a character at its end. A text in UTF-8 that was cut anywhere becomes
/// UTF-8 again; at most three bytes go.
std::string_view withoutPartialCharacter(std::string_view text);

/// The character, an ASCII capital in lower case. Does not depend on the locale.
constexpr char asciiLowerCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Whether the texts differ at most in the case of ASCII letters.
constexpr bool equalsIgnoringAsciiCase(std::string_view one, std::string_view other) {
    return std::ranges::equal(one, other, {}, asciiLowerCase, asciiLowerCase);
}

} // namespace tavel
