#include "Console/HumanText.h"

#include <glib.h>

#include <array>
#include <cstdio>

namespace tavel {

namespace {

constexpr gunichar zeroWidthNonJoiner = 0x200C;
constexpr gunichar zeroWidthJoiner = 0x200D;
constexpr gunichar lastLatin1 = 0xFF;

/// A character, or a byte that begins none.
struct Character {
    gunichar code;
    std::size_t length;
    bool valid;
};

/// `text` must not be empty.
Character firstCharacter(std::string_view text) {
    const gunichar code = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
    // GLib ends the text at a zero byte.
    if (text.front() == '\0')
        return {0, 1, true};
    if (code == static_cast<gunichar>(-1) || code == static_cast<gunichar>(-2))
        return {static_cast<unsigned char>(text.front()), 1, false};
    return {code, static_cast<std::size_t>(g_unichar_to_utf8(code, nullptr)), true};
}

bool isInvisible(gunichar code) {
    // The joiners are invisible too, but some scripts and emoji need them.
    if (code == zeroWidthJoiner || code == zeroWidthNonJoiner)
        return false;
    switch (g_unichar_type(code)) {
    case G_UNICODE_CONTROL:
    case G_UNICODE_FORMAT:
    case G_UNICODE_UNASSIGNED:
    case G_UNICODE_PRIVATE_USE:
    case G_UNICODE_LINE_SEPARATOR:
    case G_UNICODE_PARAGRAPH_SEPARATOR:
        return true;
    default:
        return false;
    }
}

std::string numericEscape(const char* format, gunichar code) {
    std::array<char, 16> escape{};
    std::snprintf(escape.data(), escape.size(), format, static_cast<unsigned>(code));
    return escape.data();
}

std::string escapeFor(const Character& character) {
    if (!character.valid)
        return numericEscape("\\x%02x", character.code);
    switch (character.code) {
    case '\\':
        return "\\\\";
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    case '\x1b':
        return "\\e";
    case '\0':
        return "\\0";
    default:
        return numericEscape(character.code <= lastLatin1 ? "\\u{%02x}" : "\\u{%04x}", character.code);
    }
}

/// Whether the character combines with the one before it: an accent, or a part of a joined emoji.
bool continuesCharacter(std::string_view text, std::size_t offset) {
    const Character next = firstCharacter(text.substr(offset));
    return next.valid && (g_unichar_ismark(next.code) || next.code == zeroWidthJoiner);
}

std::size_t characterCount(std::string_view text) {
    std::size_t count = 0;
    for (std::size_t offset = 0; offset < text.size(); ++count)
        offset += firstCharacter(text.substr(offset)).length;
    return count;
}

/// The length in bytes of a beginning of at most `longest` characters.
std::size_t beginningLength(std::string_view text, std::size_t longest) {
    std::size_t offset = 0;
    std::size_t lastBoundary = 0;
    for (std::size_t count = 0; offset < text.size(); ++count) {
        if (!continuesCharacter(text, offset))
            lastBoundary = offset;
        if (count == longest)
            // Accents on a single letter leave no boundary to cut at.
            return lastBoundary > 0 ? lastBoundary : offset;
        offset += firstCharacter(text.substr(offset)).length;
    }
    return offset;
}

} // namespace

std::string humanSize(std::uint64_t bytes) {
    if (bytes < 1024)
        return counted(bytes, "byte");
    static constexpr std::array units{"KiB", "MiB", "GiB"};
    double amount = static_cast<double>(bytes) / 1024;
    std::size_t unit = 0;
    // Larger amounts would be rounded to 1024.0.
    constexpr double nextUnit = 1023.95;
    while (amount >= nextUnit && unit + 1 < units.size()) {
        amount /= 1024;
        ++unit;
    }
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f %s", amount, units[unit]);
    return text.data();
}

std::string counted(std::size_t number, std::string_view noun) {
    std::string text = std::to_string(number);
    text.append(" ").append(noun);
    if (number != 1)
        text += 's';
    return text;
}

std::string visibleText(std::string_view text) {
    std::string visible;
    visible.reserve(text.size());
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        if (!character.valid || character.code == '\\' || isInvisible(character.code))
            visible += escapeFor(character);
        else
            visible += text.substr(0, character.length);
        text.remove_prefix(character.length);
    }
    return visible;
}

std::string quotedText(std::string_view text) {
    const std::size_t length = beginningLength(text, longestQuotation);
    std::string quoted = '"' + visibleText(text.substr(0, length)) + '"';
    if (length < text.size())
        quoted += "... and " + counted(characterCount(text.substr(length)), "more character");
    return quoted;
}

} // namespace tavel
