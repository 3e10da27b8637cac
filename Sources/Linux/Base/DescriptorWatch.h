#pragma once

#include "Platform/EventLoop.h"

#include <glib.h>

namespace tavel {

/// Calls a function on GLib's default main context whenever the descriptor is readable or closed by its peer,
/// as long as this object lives. The function may destroy this object. A call that throws std::exception is
/// abandoned. Main thread only.
class DescriptorWatch {
public:
    /// The descriptor remains the caller's. Throws std::bad_alloc.
    DescriptorWatch(int descriptor, EventLoop::Function ready);
    ~DescriptorWatch();
    DescriptorWatch(const DescriptorWatch&) = delete;
    DescriptorWatch& operator=(const DescriptorWatch&) = delete;

    /// Makes the main context call the function once more, whatever the descriptor's state is.
    void call() const { g_source_set_ready_time(source_, 0); }

private:
    GSource* source_;
};

} // namespace tavel
