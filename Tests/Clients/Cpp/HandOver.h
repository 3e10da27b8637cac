#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <stdexcept>
#include <utility>

namespace tavel::client {

/// Hands over what one thread adds to another one.
template <typename Value>
class HandOver {
public:
    void add(Value value) {
        const std::lock_guard lock(mutex_);
        values_.push_back(std::move(value));
        added_.notify_one();
    }

    /// Throws std::runtime_error if nothing comes in a minute, which is far more than a busy machine needs.
    Value take() {
        std::unique_lock lock(mutex_);
        if (!added_.wait_for(lock, std::chrono::minutes(1), [this] { return !values_.empty(); }))
            throw std::runtime_error("What was waited for did not come.");
        Value value = std::move(values_.front());
        values_.pop_front();
        return value;
    }

private:
    std::mutex mutex_;
    std::condition_variable added_;
    std::deque<Value> values_;
};

} // namespace tavel::client
