#pragma once

#include "Linux/Base/DescriptorWatch.h"
#include "Linux/Store/LmdbEnvironment.h"
#include "Platform/EventLoop.h"

#include <optional>

namespace tavel {

/// Tells of the commits in an environment, by whatever process, without a look at it from time to time. Main
/// thread only.
class CommitWatch {
public:
    CommitWatch() = default;
    ~CommitWatch() { end(); }
    CommitWatch(const CommitWatch&) = delete;
    CommitWatch& operator=(const CommitWatch&) = delete;

    /// From now on, `committed` runs in the event loop after each commit that readers can see, once for
    /// several if they come quickly, and now and then without one. It may destroy this object. False, and
    /// nothing runs, if the user has no inotify instance or watch left, or the system has none. Throws
    /// std::bad_alloc. To be called until it returns, and then no more.
    bool start(const LmdbEnvironment& environment, EventLoop::Function committed);

private:
    void end();
    void takeEvents() const;

    int events_ = -1; // an inotify instance, once started
    std::optional<DescriptorWatch> watch_;
};

} // namespace tavel
