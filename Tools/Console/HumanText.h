#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tavel {

/// "1 byte", "999 bytes", then KiB, MiB and GiB with one decimal.
std::string humanSize(std::uint64_t bytes);

/// The number with its noun, which takes an s in the plural: "1 file", "2 files".
std::string counted(std::size_t number, std::string_view noun);

/// The text as one line without control sequences for the terminal. Backslashes, control characters, line
/// separators and invisible characters (some change the writing direction) become escapes such as \n, \e and
/// \u{202e}; bytes that are not UTF-8 become escapes such as \xff.
std::string visibleText(std::string_view text);

/// The maximum of characters that `quotedText` shows.
inline constexpr std::size_t longestQuotation = 200;

/// The visible text in quotation marks. A text longer than `longestQuotation` is cut, but not between a
/// letter and its accents; the number of missing characters follows.
std::string quotedText(std::string_view text);

} // namespace tavel
