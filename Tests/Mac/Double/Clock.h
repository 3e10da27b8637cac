#pragma once

#include <chrono>

/// The clock that timers and delays go by. It is the real one until a test turns it.
namespace tavel::doubles {

using Time = std::chrono::nanoseconds; // since a moment of the program's own

Time now();

/// From here on, for as long as the object exists, the time only passes while the main thread waits, which
/// takes no real time: it is at once the next time at which something is due. For one thread alone.
class TurnedClock {
public:
    TurnedClock();
    ~TurnedClock();
    TurnedClock(const TurnedClock&) = delete;
    TurnedClock& operator=(const TurnedClock&) = delete;
};

/// Whether the clock is turned, and has been turned to that time now.
bool turnClockTo(Time time);

/// That time on the real clock.
std::chrono::steady_clock::time_point realTime(Time time);

} // namespace tavel::doubles
