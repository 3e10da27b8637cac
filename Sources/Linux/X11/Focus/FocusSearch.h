#pragma once

#include "Linux/X11/Focus/BusConnection.h"
#include "Linux/X11/Focus/FocusCache.h"

#include <optional>
#include <stop_token>

namespace tavel {

/// Searches the user interface of the process for the element with the keyboard focus until `end` or `stop`.
/// Takes up to some hundred milliseconds, so it must not run while a key waits. Any thread.
///
/// nullopt if no element has the focus, or if several claim it and nothing tells which one is right.
std::optional<AccessibleElement> searchFocus(const BusConnection& bus, std::int32_t process,
                                             BusConnection::Clock::time_point end,
                                             const std::stop_token& stop);

} // namespace tavel
