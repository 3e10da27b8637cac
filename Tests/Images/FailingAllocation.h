#pragma once

#include <cstddef>

namespace tavel {

/// Makes one operator new of this process fail, on any thread: the one after `before` others, counted from
/// here on. One object at a time.
class FailingAllocation {
public:
    explicit FailingAllocation(std::size_t before);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    /// Whether it has happened.
    bool hasFailed() const;
};

} // namespace tavel
