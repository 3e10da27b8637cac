#pragma once

#include <concepts>
#include <span>
#include <string>
#include <string_view>

namespace tavel {

/// Builds one JSON object (RFC 8259) as compact text. Slashes are escaped, which RFC 8259 allows: it is what
/// the home platform's own writer does, so parents see one form on every platform. Keys are written as they
/// stand: plain ASCII names without quotes or backslashes. Integers and booleans only come in through their
/// own types, so that no pointer can slip in as a truth value.
class JsonObject {
public:
    JsonObject& add(std::string_view key, std::string_view value);
    JsonObject& add(std::string_view key, const char* value) { return add(key, std::string_view(value)); }
    JsonObject& add(std::string_view key, std::span<const std::string> values);

    template <std::same_as<bool> Boolean>
    JsonObject& add(std::string_view key, Boolean value) {
        return addRaw(key, value ? "true" : "false");
    }

    template <std::integral Integer>
        requires(!std::same_as<Integer, bool>)
    JsonObject& add(std::string_view key, Integer value) {
        return addRaw(key, std::to_string(value));
    }

    /// The bytes in base64 without padding, as a string: written straight into the object's text.
    JsonObject& addBase64(std::string_view key, std::string_view bytes);

    /// Whether every string was UTF-8; if not, the text is not JSON and must not be sent.
    bool isValid() const { return valid_; }

    /// The object's text, followed by a line feed. The object is used up.
    std::string takeLine();

private:
    void appendKey(std::string_view key);
    void appendString(std::string_view value);
    JsonObject& addRaw(std::string_view key, std::string_view value);

    std::string text_ = "{";
    bool valid_ = true;
};

} // namespace tavel
