#include "Tests/Mac/Double/Application.h"

#include "Mac/Application.h"
#include "Tests/Mac/Double/MainLoop.h"

#include <atomic>
#include <vector>

namespace tavel {

namespace {

std::atomic<int> events = 0;
std::atomic<int> pools = 0;
thread_local std::vector<int> open;

bool takeEvent() {
    if (events == 0)
        return false;
    --events; // no other thread takes events
    return true;
}

} // namespace

namespace doubles {

int currentPool() {
    return open.empty() ? 0 : open.back();
}

int openPools() {
    return static_cast<int>(open.size());
}

int waitingEvents() {
    return events;
}

void resetApplication() {
    events = 0;
}

} // namespace doubles

/// Stopping the run loop does not end the wait: without an event, the application runs the loop again.
void passOneEvent(std::chrono::milliseconds longestWait) {
    doubles::waitInMode(kCFRunLoopDefaultMode, longestWait, takeEvent);
}

void wakeApplication() {
    ++events;
    doubles::wakeMainLoop();
}

void runInAutoreleasePool(const std::function<void()>& function) {
    open.push_back(++pools);
    function();
    open.pop_back();
}

} // namespace tavel
