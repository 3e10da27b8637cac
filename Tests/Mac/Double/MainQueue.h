#pragma once

#include "Tests/Mac/Double/Clock.h"

#include <cstdint>
#include <optional>
#include <vector>

/// Stands in for the queues of Dispatch: the main one, which the main run loop serves, and the global ones.
namespace tavel::doubles {

/// Runs what is posted and due, one after the other, unless that is going on already. Main thread.
void runMainQueue();

/// When the next delayed work is due. Any thread.
std::optional<Time> nextDelayed();

/// Waits for the work of the global queues, and tells the queues that it was given to.
std::vector<std::intptr_t> finishGlobalWork();

} // namespace tavel::doubles
