#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tavel {

/// A number of bytes as people say it: "1 byte", "999 bytes", then in KiB, MiB and GiB with one decimal.
std::string humanSize(std::uint64_t bytes);

/// "1 file", "2 files": the number with its noun, which takes an s in the plural.
std::string counted(std::size_t number, std::string_view noun);

/// The text as one line that a terminal takes no orders from. Backslashes, control characters, line
/// separators and the invisible characters that change the direction of writing become escapes such as \n,
/// \e and \u{202e}; bytes that are not UTF-8 become escapes such as \xff.
std::string visibleText(std::string_view text);

/// The most characters that `quotedText` shows of a text.
inline constexpr std::size_t longestQuotation = 200;

/// The visible text in quotation marks. Of a text longer than `longestQuotation` only its beginning, which
/// does not end inside a character with its accents, and how much is missing.
std::string quotedText(std::string_view text);

} // namespace tavel
