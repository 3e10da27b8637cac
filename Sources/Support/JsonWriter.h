#pragma once

#include <concepts>
#include <span>
#include <string>
#include <string_view>

namespace tavel {

/// Builds one JSON object (RFC 8259) as compact text. Escapes slashes, as the home platform's own writer
/// does, so that parents see the same form on every platform. Keys must be plain ASCII names without quotes
/// and backslashes; they are not escaped. The overloads for integers and booleans take exactly these types,
/// so that no pointer converts to a boolean.
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

    /// Adds the bytes as a string, in base64 without padding. Encodes directly into the object's text.
    JsonObject& addBase64(std::string_view key, std::string_view bytes);

    /// Whether every string was UTF-8. If not, the text is not JSON and must not be sent.
    bool isValid() const { return valid_; }

    /// The object's text, followed by a line feed. Must be the last call.
    std::string takeLine();

private:
    void appendKey(std::string_view key);
    void appendString(std::string_view value);
    JsonObject& addRaw(std::string_view key, std::string_view value);

    std::string text_ = "{";
    bool valid_ = true;
};

} // namespace tavel
