#include "Tests/Mac/Double/Clock.h"

namespace tavel::doubles {

namespace {

using Real = std::chrono::steady_clock;

const Real::time_point start = Real::now();
bool isManual = false; // set only while no other thread reads the clock
Time manualTime{};

} // namespace

Time now() {
    return isManual ? manualTime : std::chrono::duration_cast<Time>(Real::now() - start);
}

bool setManualClock(Time time) {
    if (isManual)
        manualTime = time;
    return isManual;
}

std::chrono::steady_clock::time_point realTime(Time time) {
    return start + time;
}

ManualClock::ManualClock() {
    manualTime = now();
    isManual = true;
}

ManualClock::~ManualClock() {
    isManual = false;
}

} // namespace tavel::doubles
