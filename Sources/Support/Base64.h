#pragma once

#include "Support/Bytes.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// Appends the bytes in standard base64 (RFC 4648, section 4), without line breaks and without padding.
void appendBase64(std::string& text, std::string_view bytes);

/// Does the same for a JSON string, with a backslash before each slash.
void appendEscapedBase64(std::string& text, std::string_view bytes);

/// Decodes standard base64. Padding may be missing in part or whole. nullopt if the text has a character
/// outside the alphabet (line breaks included), too much padding, or a length that no bytes encode to.
/// Ignores the unused bits of the last character.
std::optional<Bytes> decodeBase64(std::string_view text);

/// Decodes what follows the last group of four characters of the alphabet: nothing, fewer characters, or a
/// group with some or all of its padding. Writes up to three bytes, and returns how many of them the
/// characters make up: none for a single one, which more may follow. nullopt if no base64 has such an end.
std::optional<std::size_t> decodeEndOfBase64(std::string_view end, char* out);

} // namespace tavel
