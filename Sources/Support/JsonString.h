#pragma once

#include <optional>
#include <span>
#include <string_view>

namespace tavel {

/// Replaces the escapes (RFC 8259, section 7) in what stands between the quotes of a JSON string, in place,
/// as no escape is shorter than what it stands for: a string of 90 MB then needs no second buffer. Gives the
/// result, a prefix of `text`; nothing for an unknown or cut escape, and for half a surrogate pair. Control
/// characters and malformed UTF-8 outside the escapes are for the caller to have refused.
std::optional<std::string_view> unescapeJsonString(std::span<char> text);

} // namespace tavel
