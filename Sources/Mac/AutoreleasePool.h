#pragma once

#include <functional>

namespace tavel {

/// Calls `function` with an autorelease pool of its own around it: for threads and callbacks of the system,
/// whose own pools are emptied at times that nobody knows. For code that has no Objective-C.
void runInAutoreleasePool(const std::function<void()>& function);

} // namespace tavel
