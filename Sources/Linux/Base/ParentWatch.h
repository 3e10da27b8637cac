#pragma once

#include "Linux/Base/DescriptorWatch.h"
#include "Platform/EventLoop.h"

#include <cstdint>
#include <optional>

namespace tavel {

/// Tells when this process loses its parent, without a look at it from time to time. Main thread only.
class ParentWatch {
public:
    /// The loop must outlive this object.
    explicit ParentWatch(EventLoop& loop) : loop_(loop) {}
    ~ParentWatch() { end(); }
    ParentWatch(const ParentWatch&) = delete;
    ParentWatch& operator=(const ParentWatch&) = delete;

    /// From now on, `lost` runs once in the event loop when that process has ended or is not this one's
    /// parent; also if that is so already. False, and nothing runs, if the system cannot tell: kernels before
    /// 5.3, a container that refuses the call, no descriptor left, or a parent outside of this process's
    /// namespace, whose number is 0. Throws std::bad_alloc. To be called until it returns, and then no more.
    bool start(std::int32_t processIdentifier, EventLoop::Function lost);

private:
    void end();

    EventLoop& loop_;
    int process_ = -1; // a descriptor of the parent (pidfd_open), while it is watched
    std::optional<DescriptorWatch> watch_;
};

} // namespace tavel
