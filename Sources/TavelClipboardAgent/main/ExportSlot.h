#pragma once

#include <atomic>

namespace tavel {

/// Limits background exports to one at a time. Nobody waits for the slot; whoever finds it taken tries again
/// later. Any thread.
class ExportSlot {
public:
    /// Takes the slot; false if it is taken already.
    bool tryAcquire() { return !taken_.exchange(true); }

    /// Frees the slot, which another thread may have taken.
    void release() { taken_ = false; }

    bool isTaken() const { return taken_; }

private:
    std::atomic<bool> taken_ = false;
};

} // namespace tavel
