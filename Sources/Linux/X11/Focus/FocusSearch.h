#pragma once

#include "Linux/X11/Focus/BusConnection.h"
#include "Linux/X11/Focus/FocusCache.h"

#include <optional>
#include <stop_token>

namespace tavel {

/// Looks through the user interface of that process for the element that has the keyboard focus, for as long
/// as `end` and `stop` let it. Takes from some milliseconds to some hundred: never while a key waits. Any
/// thread.
///
/// Nothing if there is none, or more than one place claims it and it cannot be told which.
std::optional<AccessibleElement> searchFocus(const BusConnection& bus, std::int32_t process,
                                             BusConnection::Clock::time_point end,
                                             const std::stop_token& stop);

} // namespace tavel
