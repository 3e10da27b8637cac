#include "Support/Text.h"

#include <simdjson.h>

#include <algorithm>
#include <cstddef>

namespace tavel {

namespace {

/// simdjson chooses its code for this processor at its first use, and allocates memory in functions that must
/// not throw. It does so here, before main: later, the lack of that memory would end the process.
[[maybe_unused]] const bool isChosen = simdjson::validate_utf8("", 0);

} // namespace

bool isUtf8(std::string_view bytes) {
    return simdjson::validate_utf8(bytes.data(), bytes.size());
}

std::string_view withoutPartialCharacter(std::string_view text) {
    constexpr std::size_t longestPart = 3;
    for (std::size_t length = 1; length <= std::min(longestPart, text.size()); ++length) {
        const auto byte = static_cast<unsigned char>(text[text.size() - length]);
        if (byte < 0x80)
            break; // a character of its own
        if (byte < 0xC0)
            continue; // a byte in the middle of a character
        const std::size_t wanted = byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
        return wanted > length ? text.substr(0, text.size() - length) : text;
    }
    return text;
}

} // namespace tavel
