#pragma once

#include "Support/Bytes.h"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace tavel {

/// Appends the bytes in standard base64 (RFC 4648, section 4), without line breaks and without padding.
void appendBase64(std::string& text, std::string_view bytes);

/// Does the same for a JSON string, with a backslash before each slash.
void appendEscapedBase64(std::string& text, std::string_view bytes);

/// Decodes standard base64. Padding may be missing in part or whole. nullopt if the text has a character
/// outside the alphabet (line breaks included), too much padding, or a length that no bytes encode to.
/// Ignores the unused bits of the last character.
std::optional<Bytes> decodeBase64(std::string_view text);

/// Base64 in a part of a buffer that nobody else uses. It is decoded in place, so a picture of 64 MiB needs
/// no second buffer.
class Base64Text {
public:
    /// `owner` keeps the characters alive.
    Base64Text(std::shared_ptr<void> owner, std::span<char> characters)
        : owner_(std::move(owner)), characters_(characters) {}

    static Base64Text copyOf(std::string_view text);

    std::string_view view() const { return {characters_.data(), characters_.size()}; }

    /// Decodes like `decodeBase64`. The bytes share the buffer and overwrite the characters.
    std::optional<Bytes> decode() &&;

private:
    std::shared_ptr<void> owner_;
    std::span<char> characters_;
};

} // namespace tavel
