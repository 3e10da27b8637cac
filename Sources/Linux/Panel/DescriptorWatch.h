#pragma once

#include <glib.h>

#include <functional>

namespace tavel {

/// Has a function called by GLib's default main context whenever the descriptor can be read or has been shut,
/// for as long as this object lives; the function may end that. Main thread only.
class DescriptorWatch {
public:
    DescriptorWatch(int descriptor, std::function<void()> ready);
    ~DescriptorWatch();
    DescriptorWatch(const DescriptorWatch&) = delete;
    DescriptorWatch& operator=(const DescriptorWatch&) = delete;

    /// Has it called once more, soon, whatever the descriptor's state is.
    void call() const { g_source_set_ready_time(source_, 0); }

private:
    GSource* source_;
};

} // namespace tavel
