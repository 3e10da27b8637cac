#pragma once

#include "Support/Bytes.h"

#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// Appends the bytes in standard base64 (RFC 4648, section 4), without line breaks and without the padding
/// at the end. A slash is written as `slash`: "/", or what stands for it in the text around.
void appendBase64(std::string& text, std::string_view bytes, std::string_view slash = "/");

/// Decodes standard base64 whose padding may be missing in part or whole. Anything outside the alphabet,
/// line breaks included, more padding than belongs there, or a number of characters that no bytes give:
/// nothing. Bits that no byte takes up are ignored.
std::optional<Bytes> decodeBase64(std::string_view text);

} // namespace tavel
