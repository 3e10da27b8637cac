#pragma once

#include <atomic>
#include <memory>
#include <utility>

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

/// Frees the slot when it goes away, if it has taken it and not handed it over.
class ExportLease {
public:
    explicit ExportLease(std::shared_ptr<ExportSlot> slot) : slot_(std::move(slot)) {}
    ~ExportLease() { release(); }
    ExportLease(const ExportLease&) = delete;
    ExportLease& operator=(const ExportLease&) = delete;

    /// Takes the slot; false if it is taken already.
    bool tryAcquire() { return holds_ = slot_->tryAcquire(); }

    void release() {
        if (std::exchange(holds_, false))
            slot_->release();
    }

    /// The slot stays taken; somebody else frees it.
    void handOver() { holds_ = false; }

private:
    std::shared_ptr<ExportSlot> slot_;
    bool holds_ = false;
};

} // namespace tavel
