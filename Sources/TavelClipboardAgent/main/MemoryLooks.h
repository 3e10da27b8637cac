#pragma once

#include "Platform/EventLoop.h"
#include "TavelClipboardAgent/main/MemoryReturn.h"

#include <functional>
#include <memory>
#include <utility>

namespace tavel {

/// Returns free memory where no tick runs: looks once a second from any work of the event loop on, until the
/// work has ended and its memory was returned. A process that rests has no timer. Main thread only. Held by a
/// shared_ptr; timers hold it weakly.
class MemoryLooks : public std::enable_shared_from_this<MemoryLooks> {
public:
    /// While `isBusy`, memory may be freed without a pass of the loop, and the looks go on: another thread
    /// works, or a parent has still to read. `giveBack` returns free memory to the system. `loop` must
    /// outlive this object.
    MemoryLooks(EventLoop& loop, MemoryReturn memory, std::function<bool()> isBusy,
                std::function<void()> giveBack)
        : loop_(loop), memory_(std::move(memory)), isBusy_(std::move(isBusy)),
          giveBack_(std::move(giveBack)) {}

    /// To be called after each pass of the loop, which has served something.
    void afterPass();

private:
    void look();
    void schedule();

    EventLoop& loop_;
    MemoryReturn memory_;
    std::function<bool()> isBusy_;
    std::function<void()> giveBack_;
    bool isScheduled_ = false;
    bool isDue_ = false;
};

} // namespace tavel
