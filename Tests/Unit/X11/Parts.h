#pragma once

#include "Linux/X11/Selections/IncomingTransfer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string_view>

namespace tavel {

/// Prints a state in messages of GoogleTest.
inline void PrintTo(IncomingTransfer::State state, std::ostream* stream) {
    constexpr std::array names{"requested", "arriving", "increments", "complete", "cut", "failed", "over"};
    *stream << names.at(static_cast<std::size_t>(state));
}

/// Types of properties. The numbers are arbitrary, as an X server assigns them.
inline constexpr std::uint32_t incremental = 301;
inline constexpr std::uint32_t utf8 = 302;
inline constexpr std::uint32_t otherType = 303;

inline PropertyPart part(std::string_view bytes, std::size_t remaining = 0, std::uint32_t type = utf8,
                         int format = 8) {
    return {type, format, Bytes::copyOf(bytes), remaining};
}

/// The announcement of increments, with the owner's 32-bit estimate of the size.
inline PropertyPart announcement(std::string_view guess = std::string_view("\0\0\0\0", 4)) {
    return part(guess, 0, incremental, 32);
}

/// The empty increment, which ends the value.
inline PropertyPart lastIncrement() {
    return part("");
}

/// The result of reading a property that does not exist.
inline PropertyPart noProperty() {
    return {};
}

} // namespace tavel
