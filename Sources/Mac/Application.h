#pragma once

#include <chrono>
#include <functional>

/// The process as an AppKit application, for code without Objective-C: its activation, its events, and the
/// autorelease pools of callbacks. Every wait, wake-up and policy change keeps raised exceptions to itself.
namespace tavel {

/// Makes the process an application that may show windows, without a Dock icon or a menu bar. Call it before
/// anything else here. A further call changes nothing. Main thread only.
void becomeAccessoryApplication();

/// Asks the system to make this application the active one, which receives the keys. The system decides
/// asynchronously, and refuses while the user works in another application. May raise an Objective-C
/// exception. Main thread only.
void requestActivation();

/// The same with emphasis: activates this application also while the user works in another one. May raise an
/// Objective-C exception. Main thread only.
void demandActivation();

/// Waits up to `longestWait` for an event and dispatches it. Timers, run loop sources and the main dispatch
/// queue are served during the wait; they do not end it. Main thread only.
void passOneEvent(std::chrono::milliseconds longestWait);

/// Ends the current wait of passOneEvent, or the next one if none is in progress. Any thread. Each call costs
/// the event loop one pass.
void wakeApplication();

/// Calls `function` within an autorelease pool of its own. Callbacks of the system need one: the pool around
/// them may be drained much later. Any thread.
void runInAutoreleasePool(const std::function<void()>& function);

} // namespace tavel
