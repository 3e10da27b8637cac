#pragma once

#include "Linux/X11/Selections/IncomingTransfer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string_view>

namespace tavel {

/// How GoogleTest shows a state.
inline void PrintTo(IncomingTransfer::State state, std::ostream* stream) {
    constexpr std::array names{"requested", "arriving", "increments", "complete", "failed", "over"};
    *stream << names.at(static_cast<std::size_t>(state));
}

/// Types of properties. Which number an atom has is the server's choice.
inline constexpr std::uint32_t incremental = 301;
inline constexpr std::uint32_t utf8 = 302;
inline constexpr std::uint32_t otherType = 303;

inline PropertyPart part(std::string_view bytes, std::size_t remaining = 0, std::uint32_t type = utf8,
                         int format = 8) {
    return {type, format, Bytes::copyOf(bytes), remaining};
}

/// The announcement of increments with the owner's guess of the size, which is 32 bits long.
inline PropertyPart announcement(std::string_view guess = std::string_view("\0\0\0\0", 4)) {
    return part(guess, 0, incremental, 32);
}

/// The increment that says that there is no more.
inline PropertyPart lastIncrement() {
    return part("");
}

/// What reading a property gives that is not there.
inline PropertyPart noProperty() {
    return {};
}

} // namespace tavel
