#pragma once

#include <atomic>

namespace tavel {

/// The one place for an export that runs in the background. It is only ever tried, never waited for: what
/// finds it taken comes back later. Any thread.
class ExportSlot {
public:
    /// Takes the place. False if it is taken.
    bool tryAcquire() { return !taken_.exchange(true); }

    /// Frees the place that was taken, by whatever thread.
    void release() { taken_ = false; }

    bool isTaken() const { return taken_; }

private:
    std::atomic<bool> taken_ = false;
};

} // namespace tavel
