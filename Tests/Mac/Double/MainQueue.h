#pragma once

#include "Tests/Mac/Double/Clock.h"

#include <cstdint>
#include <optional>
#include <vector>

/// A double of Dispatch's queues: the main queue, which the main run loop serves, and the global ones.
namespace tavel::doubles {

/// Runs the posted functions that are due, in order. Does nothing when called from within one. Main thread.
void runMainQueue();

/// When the next delayed function is due. Any thread.
std::optional<Time> nextDelayed();

/// Waits until the global queues are idle. Returns the quality of service of each job that they were given.
std::vector<std::intptr_t> finishGlobalWork();

} // namespace tavel::doubles
