#include "Mac/MacEventLoop.h"

#include "Mac/Application.h"

#include <dispatch/dispatch.h>

#include <new>
#include <utility>

namespace tavel {

namespace {

/// The C function for dispatch queues. `context` is a Function on the heap, which is run and deleted. The
/// pool also covers the destruction of its captures.
void runOwnedFunction(void* context) noexcept {
    runInAutoreleasePool([context] {
        const std::unique_ptr<EventLoop::Function> function(static_cast<EventLoop::Function*>(context));
        runOrAbandon(*function);
    });
}

void runTick(CFRunLoopTimerRef, void* context) noexcept {
    runInAutoreleasePool([context] { runOrAbandon(*static_cast<const EventLoop::Function*>(context)); });
}

} // namespace

MacEventLoop::~MacEventLoop() {
    for (const Tick& tick : ticks_)
        CFRunLoopTimerInvalidate(tick.timer.get());
}

void MacEventLoop::runOnce(std::chrono::milliseconds longestWait) {
    passOneEvent(longestWait);
}

void MacEventLoop::post(Function function) {
    dispatch_async_f(dispatch_get_main_queue(), new Function(std::move(function)), runOwnedFunction);
}

void MacEventLoop::postAfter(std::chrono::milliseconds delay, Function function) {
    const std::chrono::nanoseconds nanoseconds = delay;
    dispatch_after_f(dispatch_time(DISPATCH_TIME_NOW, nanoseconds.count()), dispatch_get_main_queue(),
                     new Function(std::move(function)), runOwnedFunction);
}

/// In the default mode only: there are no ticks while the user drags in a menu or at a window's edge. A tick
/// may be late by a tenth of the interval, so that the system can serve it together with other wake-ups.
void MacEventLoop::repeat(std::chrono::milliseconds interval, Function function) {
    const std::chrono::duration<CFTimeInterval> seconds = interval;
    auto owned = std::make_unique<Function>(std::move(function));
    CFRunLoopTimerContext context{};
    context.info = owned.get();
    auto timer = CFRef<CFRunLoopTimerRef>::adopt(
        CFRunLoopTimerCreate(kCFAllocatorDefault, CFAbsoluteTimeGetCurrent() + seconds.count(),
                             seconds.count(), 0, 0, runTick, &context));
    if (!timer)
        throw std::bad_alloc();
    CFRunLoopTimerSetTolerance(timer.get(), seconds.count() / 10);
    // First what may fail: the run loop keeps the timer, and calls the function, for ever.
    ticks_.push_back({std::move(timer), std::move(owned)});
    CFRunLoopAddTimer(CFRunLoopGetMain(), ticks_.back().timer.get(), kCFRunLoopDefaultMode);
}

void MacEventLoop::runInBackground(Function job) {
    dispatch_async_f(dispatch_get_global_queue(QOS_CLASS_UTILITY, 0), new Function(std::move(job)),
                     runOwnedFunction);
}

/// Stopping the run loop is not documented to end a wait for an event, so an event is posted as well.
void MacEventLoop::stopWaiting() {
    CFRunLoopStop(CFRunLoopGetMain());
    wakeApplication();
}

} // namespace tavel
