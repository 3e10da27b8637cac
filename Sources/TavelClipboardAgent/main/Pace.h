#pragma once

#include <chrono>

namespace tavel {

/// The time between two ticks of the timer that polls the pasteboard, and between two attempts to start what
/// could not be started.
inline constexpr std::chrono::milliseconds pollInterval{100};

/// The longest wait of one pass of the event loop. Far longer than the time between two ticks: where a wait
/// goes on after a tick, its end would otherwise wake the process a second time for each tick. A stop ends
/// the wait at once. If a platform's loop ever misses that, the next tick ends it.
inline constexpr std::chrono::milliseconds longestWait{1000};

} // namespace tavel
