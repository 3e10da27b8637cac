#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// The text in UTF-16 code units; a byte-order mark is kept. nullopt if the text is not UTF-8.
std::optional<std::u16string> utf16FromUtf8(std::string_view text);

/// The text in UTF-8; a byte-order mark is kept. An unpaired surrogate becomes U+FFFD, as in the text that
/// the home platform's own programs read (Unicode 15, section 3.9).
std::string utf8FromUtf16(std::u16string_view units);

} // namespace tavel
