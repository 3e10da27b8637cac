#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// The text in UTF-16 code units, a byte-order mark kept as the character that it is. Nothing if the bytes
/// are not UTF-8.
std::optional<std::u16string> utf16FromUtf8(std::string_view text);

/// The text in UTF-8, a byte-order mark kept. Nothing if it has half of a surrogate pair.
std::optional<std::string> utf8FromUtf16(std::u16string_view units);

} // namespace tavel
