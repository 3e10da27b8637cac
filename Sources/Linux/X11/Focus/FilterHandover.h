#pragma once

#include <atomic>

namespace tavel {

/// Orders what a message filter of GDBus does in the connection's thread after what was done before `give`,
/// and before what is done after `take`. GDBus orders it as well, but by means that no tool which looks for
/// data races knows. One object of static lifetime for all connections.
class FilterHandover {
public:
    /// Before the filter is added; after it is removed.
    void give() { count_.fetch_add(1, std::memory_order_release); }
    void take() const { (void)count_.load(std::memory_order_acquire); }

    /// Exists while a filter runs.
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
