#pragma once

#include "Tests/Mac/Double/Clock.h"
#include "Tests/Mac/Double/CoreObjects.h"

#include <functional>

/// Stands in for the main run loop: its modes, sources and timers.
namespace tavel::doubles {

/// A mode that AppKit adds to the common ones: while a menu is open or something is dragged.
extern const CFRunLoopMode eventTrackingMode;

/// Waits in that mode, serving its timers and, as all modes here are common ones, the main queue. Returns
/// after `longest`, or once `ended` holds. Main thread.
void waitInMode(CFRunLoopMode mode, Time longest, const std::function<bool()>& ended);

/// The same as a run of the loop of its own. Whether it was stopped. Main thread.
bool runMainLoop(CFRunLoopMode mode, Time longest);

/// Has the present wait look again whether there is something to do. Any thread.
void wakeMainLoop();

/// Whether a wait in that mode serves a source of that port. Main thread.
bool isServed(const Object& port, CFRunLoopMode mode);

/// Sources are refused, as when there is no memory, while this is set. It is unset at first.
extern bool refusesSources;

/// Empties the loop. Main thread.
void resetMainLoop();

} // namespace tavel::doubles
