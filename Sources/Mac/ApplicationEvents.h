#pragma once

#include <chrono>

/// The application's part of the event loop. Nothing that is raised here leaves it.
namespace tavel {

/// Makes the process an application that may show windows, without an icon or a menu of its own. Has to come
/// before everything else here. Main thread.
void becomeAccessoryApplication();

/// Waits for an event, for `longestWait` at the most, and deals with it. Meanwhile timers fire, and what
/// others have given the main thread to do is done; neither ends the wait. Main thread.
void passOneEvent(std::chrono::milliseconds longestWait);

/// Ends the wait of one pass: of the present one, or else of the next. Any thread. Each call costs the loop a
/// pass.
void wakeApplication();

} // namespace tavel
