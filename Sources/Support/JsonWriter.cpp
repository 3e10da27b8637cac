#include "Support/JsonWriter.h"

#include "Support/Base64.h"
#include "Support/Text.h"

#include <utility>

namespace tavel {

namespace {

bool needsEscape(char c) {
    return c == '"' || c == '\\' || c == '/' || static_cast<unsigned char>(c) < 0x20;
}

void appendEscape(std::string& text, char c) {
    static constexpr char digits[] = "0123456789abcdef";
    text += '\\';
    switch (c) {
    case '\b':
        text += 'b';
        break;
    case '\f':
        text += 'f';
        break;
    case '\n':
        text += 'n';
        break;
    case '\r':
        text += 'r';
        break;
    case '\t':
        text += 't';
        break;
    case '"':
    case '\\':
    case '/':
        text += c;
        break;
    default:
        text += "u00";
        text += digits[static_cast<unsigned char>(c) >> 4];
        text += digits[static_cast<unsigned char>(c) & 0x0F];
    }
}

} // namespace

JsonObject& JsonObject::add(std::string_view key, std::string_view value) {
    appendKey(key);
    appendString(value);
    return *this;
}

JsonObject& JsonObject::add(std::string_view key, std::span<const std::string> values) {
    appendKey(key);
    text_ += '[';
    for (const std::string& value : values) {
        if (text_.back() != '[')
            text_ += ',';
        appendString(value);
    }
    text_ += ']';
    return *this;
}

JsonObject& JsonObject::addBase64(std::string_view key, std::string_view bytes) {
    appendKey(key);
    text_ += '"';
    appendEscapedBase64(text_, bytes);
    text_ += '"';
    return *this;
}

std::string JsonObject::takeLine() {
    text_ += "}\n";
    return std::move(text_);
}

void JsonObject::appendKey(std::string_view key) {
    if (text_.size() > 1)
        text_ += ',';
    text_ += '"';
    text_ += key;
    text_ += "\":";
}

void JsonObject::appendString(std::string_view value) {
    valid_ = valid_ && isUtf8(value);
    text_ += '"';
    for (const char c : value) {
        if (needsEscape(c))
            appendEscape(text_, c);
        else
            text_ += c;
    }
    text_ += '"';
}

JsonObject& JsonObject::addRaw(std::string_view key, std::string_view value) {
    appendKey(key);
    text_ += value;
    return *this;
}

} // namespace tavel
