#include "Tests/Mac/Double/Clock.h"

namespace tavel::doubles {

namespace {

using Real = std::chrono::steady_clock;

const Real::time_point start = Real::now();
bool turned = false; // while only the main thread looks at the clock
Time turnedTime{};

} // namespace

Time now() {
    return turned ? turnedTime : std::chrono::duration_cast<Time>(Real::now() - start);
}

bool turnClockTo(Time time) {
    if (turned)
        turnedTime = time;
    return turned;
}

std::chrono::steady_clock::time_point realTime(Time time) {
    return start + time;
}

TurnedClock::TurnedClock() {
    turnedTime = now();
    turned = true;
}

TurnedClock::~TurnedClock() {
    turned = false;
}

} // namespace tavel::doubles
