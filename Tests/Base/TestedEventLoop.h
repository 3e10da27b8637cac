#pragma once

#include "Platform/EventLoop.h"

#include <chrono>
#include <memory>
#include <stdexcept>

namespace tavel {

using Clock = std::chrono::steady_clock;

/// Longer than any pass may take here, and shorter than a test may run.
inline constexpr std::chrono::seconds forEver{60};

/// No machine is so busy that something due at once takes longer.
inline constexpr std::chrono::seconds patience{30};

/// A new event loop of the platform whose test program this is. Main thread.
std::unique_ptr<EventLoop> makeTestedEventLoop();

/// Runs passes until the condition holds. Throws if that takes too long.
template <typename Condition>
void runUntil(EventLoop& loop, Condition condition) {
    const auto end = Clock::now() + patience;
    while (!condition()) {
        if (Clock::now() > end)
            throw std::runtime_error("What was waited for did not happen.");
        loop.runOnce(std::chrono::milliseconds(10));
    }
}

} // namespace tavel
