#pragma once

#include <chrono>
#include <stdexcept>
#include <thread>

namespace tavel {

/// Polls `condition` until it holds. Throws std::runtime_error if it does not hold within `limit`.
template <typename Condition>
void waitUntil(Condition condition, std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            throw std::runtime_error("What was waited for did not happen.");
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
}

} // namespace tavel
