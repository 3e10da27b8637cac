#pragma once

#include "Platform/KeyboardTap.h"

#include <cstdint>
#include <optional>

namespace tavel {

/// The kind of a tapped event by the number of its type (CGEventType). Nothing for one that a tap of keys
/// does not decide about.
std::optional<KeyEventType> keyEventTypeFrom(std::uint32_t type);

/// Whether posting the event presses the key. Nothing if it is no key's event.
std::optional<bool> pressesKey(KeyEventType type);

/// The key code in the size that the system has for it (CGKeyCode). Nothing if it does not fit.
std::optional<std::uint16_t> virtualKeyFrom(std::int64_t keyCode);

} // namespace tavel
