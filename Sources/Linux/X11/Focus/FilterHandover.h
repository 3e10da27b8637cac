#pragma once

#include <atomic>

namespace tavel {

/// Orders memory accesses of GDBus message filters, which run on the connection's thread: after those before
/// `give`, and before those after `take`. GDBus guarantees this order too, but in a way that race detectors
/// do not recognise. One static object serves all connections.
class FilterHandover {
public:
    /// Call `give` before the filter is added, and `take` after it is removed.
    void give() { count_.fetch_add(1, std::memory_order_release); }
    void take() const { (void)count_.load(std::memory_order_acquire); }

    /// A filter creates one for the time of its run.
    class Scope {
    public:
        explicit Scope(FilterHandover& handover) : handover_(handover) { handover_.take(); }
        ~Scope() { handover_.give(); }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        FilterHandover& handover_;
    };

private:
    std::atomic<unsigned int> count_{0};
};

} // namespace tavel
