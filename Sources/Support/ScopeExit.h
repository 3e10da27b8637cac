#pragma once

#include <utility>

namespace tavel {

/// Runs `action` at the end of the scope, also when an exception ends it. The action must not throw.
template <typename Action>
class ScopeExit {
public:
    explicit ScopeExit(Action action) : action_(std::move(action)) {}
    ~ScopeExit() { action_(); }
    ScopeExit(const ScopeExit&) = delete;
    ScopeExit& operator=(const ScopeExit&) = delete;

private:
    Action action_;
};

} // namespace tavel
