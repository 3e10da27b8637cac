#pragma once

#include "Tests/Mac/Double/Clock.h"
#include "Tests/Mac/Double/CoreObjects.h"

#include <functional>

/// A double of the main run loop: its modes, sources and timers.
namespace tavel::doubles {

/// A mode that AppKit adds to the common modes, for open menus and dragging.
extern const CFRunLoopMode eventTrackingMode;

/// Runs the loop in `mode` until `ended` holds, for `longest` at most. It serves the mode's timers and, since
/// all modes here are common modes, the main queue. A timer with a tolerance is as late as that allows,
/// unless the loop is awake anyway. Main thread.
void waitInMode(CFRunLoopMode mode, Time longest, const std::function<bool()>& ended);

/// The same as a run of its own, which a stop ends. Returns whether it was stopped. Main thread.
bool runMainLoop(CFRunLoopMode mode, Time longest);

/// Has the current wait check again for something to do. Any thread.
void wakeMainLoop();

/// Whether a wait in `mode` serves a source of that port. Main thread.
bool isServed(const Object& port, CFRunLoopMode mode);

/// How often the main thread has slept and was woken, since the start of the process. Main thread.
long wakeUpsFromSleep();

/// While set, no source can be created, as if memory had run out. Initially false.
extern bool refusesSources;

/// The same for timers.
extern bool refusesTimers;

/// Empties the loop. Main thread.
void resetMainLoop();

} // namespace tavel::doubles
