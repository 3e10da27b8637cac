#pragma once

#include "Platform/EventLoop.h"

#include <chrono>
#include <memory>
#include <stdexcept>

namespace tavel {

using Clock = std::chrono::steady_clock;

/// A wait that must be ended early. Longer than any pass here, shorter than the test's own time-out.
inline constexpr std::chrono::seconds forEver{60};

/// The limit for anything that is due at once. Even a busy machine stays below it.
inline constexpr std::chrono::seconds testTimeout{30};

/// Makes an event loop of the platform under test; each test program defines this. Main thread only.
std::unique_ptr<EventLoop> makeTestedEventLoop();

/// Runs passes until the condition holds. Throws std::runtime_error after `testTimeout`.
template <typename Condition>
void runUntil(EventLoop& loop, Condition condition) {
    const auto deadline = Clock::now() + testTimeout;
    while (!condition()) {
        if (Clock::now() > deadline)
            throw std::runtime_error("What was waited for did not happen.");
        loop.runOnce(std::chrono::milliseconds(10));
    }
}

} // namespace tavel
