#pragma once

#include <chrono>

/// The clock for timers and delays: real time, unless a test controls it.
namespace tavel::doubles {

using Time = std::chrono::nanoseconds; // since an arbitrary start

Time now();

/// While this object exists, time passes only when the main thread waits: the clock then jumps to the next
/// due time, without any real wait. Only the main thread may read the clock meanwhile.
class ManualClock {
public:
    ManualClock();
    ~ManualClock();
    ManualClock(const ManualClock&) = delete;
    ManualClock& operator=(const ManualClock&) = delete;
};

/// Sets the clock to that time if a test controls it. Returns whether one does.
bool setManualClock(Time time);

/// The time as a point of the real clock.
std::chrono::steady_clock::time_point realTime(Time time);

} // namespace tavel::doubles
