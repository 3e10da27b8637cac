#include "Tests/Mac/Double/MainLoop.h"

#include "Tests/Mac/Double/CoreValues.h"
#include "Tests/Mac/Double/MachPort.h"
#include "Tests/Mac/Double/MainQueue.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

using namespace tavel::doubles;

const CFRunLoopMode kCFRunLoopDefaultMode = CFSTR("kCFRunLoopDefaultMode");
const CFRunLoopMode kCFRunLoopCommonModes = CFSTR("kCFRunLoopCommonModes");

namespace tavel::doubles {

const CFRunLoopMode eventTrackingMode = CFSTR("NSEventTrackingRunLoopMode");
bool refusesSources = false;
bool refusesTimers = false;

} // namespace tavel::doubles

namespace {

Time timeFrom(CFAbsoluteTime seconds) {
    return Time(std::llround(seconds * 1e9));
}

struct Source final : Object {
    static constexpr Kind ofKind = sourceKind;
    explicit Source(CFTypeRef itsPort) : Object(ofKind), port(itsPort) {}
    const Reference port;
};

struct Timer final : Object {
    static constexpr Kind ofKind = timerKind;
    Timer() : Object(ofKind) {}
    Time due{};
    Time interval{};
    Time tolerance{};
    CFRunLoopTimerCallBack callBack = nullptr;
    CFRunLoopTimerContext context{};
    bool isValid = true;
};

/// An object that was added to the loop, and the mode.
struct Item {
    std::u16string mode;
    Reference object;
};

struct MainLoop final : Object {
    static constexpr Kind ofKind = runLoopKind;
    MainLoop() : Object(ofKind) {}
    bool isConstant() const override { return true; }

    std::vector<Item> sources;
    std::vector<Item> timers;
    std::atomic<bool> isStopped = false;
    std::mutex lock;
    std::condition_variable woken;
    long wakeUps = 0;
    long sleeps = 0; // main thread only
};

MainLoop mainLoop;

bool isIn(const Item& item, CFRunLoopMode mode) {
    return item.mode == textOf(mode) || item.mode == textOf(kCFRunLoopCommonModes);
}

std::vector<Reference> timersIn(CFRunLoopMode mode) {
    std::vector<Reference> found;
    for (const Item& item : mainLoop.timers) {
        if (isIn(item, mode))
            found.push_back(item.object);
    }
    return found;
}

/// A late tick skips the ticks that have been missed.
void fire(Timer& timer) {
    if (timer.interval == Time(0))
        timer.isValid = false;
    else
        timer.due += ((now() - timer.due) / timer.interval + 1) * timer.interval;
    timer.callBack(refTo<CFRunLoopTimerRef>(timer), timer.context.info);
}

void fireTimers(CFRunLoopMode mode) {
    for (const Reference& held : timersIn(mode)) {
        auto& timer = objectAt<Timer>(held.get());
        if (timer.isValid && timer.due <= now())
            fire(timer);
    }
}

Time nextDue(CFRunLoopMode mode, Time latest) {
    Time next = std::min(latest, nextDelayed().value_or(latest));
    for (const Reference& held : timersIn(mode)) {
        const auto& timer = objectAt<Timer>(held.get());
        if (timer.isValid)
            next = std::min(next, timer.due + timer.tolerance);
    }
    return next;
}

long wakeUps() {
    const std::lock_guard guard(mainLoop.lock);
    return mainLoop.wakeUps;
}

void sleepUntil(Time time, long seen) {
    std::unique_lock guard(mainLoop.lock);
    if (mainLoop.wakeUps != seen)
        return;
    ++mainLoop.sleeps;
    if (!setManualClock(time))
        mainLoop.woken.wait_until(guard, realTime(time), [seen] { return mainLoop.wakeUps != seen; });
}

void removeTimer(const Timer& timer) {
    std::erase_if(mainLoop.timers, [&](const Item& item) { return item.object.get() == &timer; });
}

} // namespace

namespace tavel::doubles {

void waitInMode(CFRunLoopMode mode, Time longest, const std::function<bool()>& ended) {
    const Time end = now() + longest;
    for (;;) {
        const long seen = wakeUps();
        fireTimers(mode);
        runMainQueue();
        if (ended() || now() >= end)
            return;
        sleepUntil(std::max(now(), nextDue(mode, end)), seen);
    }
}

bool runMainLoop(CFRunLoopMode mode, Time longest) {
    mainLoop.isStopped = false;
    waitInMode(mode, longest, [] { return mainLoop.isStopped.load(); });
    return mainLoop.isStopped;
}

void wakeMainLoop() {
    const std::lock_guard guard(mainLoop.lock);
    ++mainLoop.wakeUps;
    mainLoop.woken.notify_all();
}

long wakeUpsFromSleep() {
    return mainLoop.sleeps;
}

bool isServed(const Object& port, CFRunLoopMode mode) {
    return std::ranges::any_of(mainLoop.sources, [&](const Item& item) {
        return isIn(item, mode) && objectAt<Source>(item.object.get()).port.get() == &port;
    });
}

void resetMainLoop() {
    mainLoop.sources.clear();
    mainLoop.timers.clear();
    refusesSources = false;
    refusesTimers = false;
}

void removeSourcesOf(const Object& port) {
    std::erase_if(mainLoop.sources,
                  [&](const Item& item) { return objectAt<Source>(item.object.get()).port.get() == &port; });
}

} // namespace tavel::doubles

CFAbsoluteTime CFAbsoluteTimeGetCurrent() {
    return std::chrono::duration<CFTimeInterval>(now()).count();
}

CFRunLoopRef CFRunLoopGetMain() {
    return refTo<CFRunLoopRef>(mainLoop);
}

void CFRunLoopStop(CFRunLoopRef loop) {
    objectAt<MainLoop>(loop).isStopped = true;
    wakeMainLoop();
}

/// Ignores an invalid source or timer.
void CFRunLoopAddSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode) {
    if (isValidPort(objectAt<Source>(source).port.get()))
        objectAt<MainLoop>(loop).sources.push_back({textOf(mode), Reference(source)});
}

void CFRunLoopAddTimer(CFRunLoopRef loop, CFRunLoopTimerRef timer, CFRunLoopMode mode) {
    if (objectAt<Timer>(timer).isValid)
        objectAt<MainLoop>(loop).timers.push_back({textOf(mode), Reference(timer)});
}

CFRunLoopSourceRef CFMachPortCreateRunLoopSource(CFAllocatorRef, CFMachPortRef port, CFIndex) {
    if (refusesSources || !isValidPort(port))
        return nullptr;
    return refTo<CFRunLoopSourceRef>(*new Source(port));
}

CFRunLoopTimerRef CFRunLoopTimerCreate(CFAllocatorRef, CFAbsoluteTime first, CFTimeInterval interval,
                                       CFOptionFlags, CFIndex, CFRunLoopTimerCallBack callBack,
                                       CFRunLoopTimerContext* context) {
    if (context != nullptr &&
        (context->version != 0 || context->retain != nullptr || context->release != nullptr))
        refuse("The double makes no timer that retains its context.");
    if (refusesTimers)
        return nullptr;
    auto& timer = *new Timer;
    timer.due = timeFrom(first);
    timer.interval = timeFrom(interval);
    timer.callBack = callBack;
    if (context != nullptr)
        timer.context = *context;
    return refTo<CFRunLoopTimerRef>(timer);
}

void CFRunLoopTimerSetTolerance(CFRunLoopTimerRef timer, CFTimeInterval tolerance) {
    objectAt<Timer>(timer).tolerance = timeFrom(tolerance);
}

/// Stops the timer for good and removes it from the loop.
void CFRunLoopTimerInvalidate(CFRunLoopTimerRef timer) {
    auto& invalid = objectAt<Timer>(timer);
    invalid.isValid = false;
    removeTimer(invalid);
}
