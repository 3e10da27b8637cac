#pragma once

#include "Support/Bytes.h"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace tavel {

/// Appends the bytes in standard base64 (RFC 4648, section 4), without line breaks and without the padding
/// at the end. A slash is written as `slash`: "/", or what stands for it in the text around.
void appendBase64(std::string& text, std::string_view bytes, std::string_view slash = "/");

/// Decodes standard base64 whose padding may be missing in part or whole. Anything outside the alphabet,
/// line breaks included, more padding than belongs there, or a number of characters that no bytes give:
/// nothing. Bits that no byte takes up are ignored.
std::optional<Bytes> decodeBase64(std::string_view text);

/// Base64 in a buffer whose part it is nobody else's to use, so that it can be decoded where it stands: a
/// picture of 64 MiB then needs no second buffer.
class Base64Text {
public:
    /// `owner` keeps the characters alive.
    Base64Text(std::shared_ptr<void> owner, std::span<char> characters)
        : owner_(std::move(owner)), characters_(characters) {}

    static Base64Text copyOf(std::string_view text);

    std::string_view view() const { return {characters_.data(), characters_.size()}; }

    /// Decodes like `decodeBase64`. The bytes share the buffer; the characters are used up.
    std::optional<Bytes> decode() &&;

private:
    std::shared_ptr<void> owner_;
    std::span<char> characters_;
};

} // namespace tavel
