#pragma once

#include "Support/FreeMemory.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <utility>

namespace tavel {

/// Notices when large work has ended, by the pages of memory that the process takes, and when much is freed
/// later, by what is free in the heap: a parent may read an event long after its work. The work itself may be
/// that of any thread or library. Main thread.
class MemoryReturn {
public:
    /// Work that takes fewer pages is small, and its memory may stay.
    static constexpr std::int64_t smallestWork = 64;
    static constexpr std::int64_t smallestFreed = smallestWork * 4096; // bytes

    /// With a tick, it looks at every tenth one only, because a look is a system call. The work has ended
    /// when no more than those pages were taken since the last look, about a second ago.
    static constexpr int ticksPerLook = 10;
    static constexpr std::int64_t pagesWithoutWork = 8;

    explicit MemoryReturn(std::function<MemoryUse()> use) : use_(std::move(use)) {}

    /// Looks. True if it is time to return free memory to the system: once after each large work, and once
    /// after much was freed.
    bool look();

    /// Whether the last look found that work goes on.
    bool isWorking() const { return isWorking_; }

    /// To be called at each tick. Looks at every tenth one.
    bool isDue();

private:
    std::function<MemoryUse()> use_;
    std::int64_t pagesAtLastReturn_ = 0;
    std::int64_t pagesAtLastLook_ = 0;
    std::int64_t leastFree_ = std::numeric_limits<std::int64_t>::max(); // since the last return
    bool isWorking_ = false;
    int ticks_ = 0; // since the last look
};

} // namespace tavel
