#pragma once

#include <optional>
#include <span>
#include <string_view>

namespace tavel {

/// Replaces the escapes (RFC 8259, section 7) in `text`, the characters between the quotes of a JSON string.
/// It works in place, as no escape is shorter than its character, so a string of 90 MB needs no second
/// buffer. Returns the result, a prefix of `text`; nullopt for an unknown or truncated escape, and for half a
/// surrogate pair. The caller has to refuse control characters and malformed UTF-8 beforehand.
std::optional<std::string_view> unescapeJsonString(std::span<char> text);

} // namespace tavel
