#pragma once

#include <cstdint>
#include <functional>
#include <utility>

namespace tavel {

/// Notices when large work has ended, by the pages of memory that the process takes: the work itself may be
/// that of any thread or library. Main thread.
class MemoryReturn {
public:
    /// Work that takes fewer pages is small, and its memory may stay.
    static constexpr std::int64_t smallestWork = 64;

    /// It looks at every tenth tick only, because a look is a system call. The work has ended when no more
    /// than those pages were taken since the last look.
    static constexpr int ticksPerLook = 10;
    static constexpr std::int64_t pagesWithoutWork = 8;

    /// `pages` gives the number of pages taken so far.
    explicit MemoryReturn(std::function<std::int64_t()> pages) : pages_(std::move(pages)) {}

    /// To be called at each tick. True if it is time to return free memory to the system: once after each
    /// large work.
    bool isDue();

private:
    std::function<std::int64_t()> pages_;
    std::int64_t atLastReturn_ = 0;
    std::int64_t atLastLook_ = 0;
    int ticks_ = 0; // since the last look
};

} // namespace tavel
