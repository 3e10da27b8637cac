#pragma once

#include <chrono>
#include <stdexcept>
#include <thread>

namespace tavel {

/// Waits until `condition` holds, which is asked again and again. Throws when it does not within `patience`.
template <typename Condition>
void waitUntil(Condition condition, std::chrono::milliseconds patience) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            throw std::runtime_error("What was waited for did not happen.");
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
}

} // namespace tavel
