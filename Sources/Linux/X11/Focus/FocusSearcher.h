#pragma once

#include "Linux/X11/Focus/BusConnection.h"
#include "Linux/X11/Focus/FocusCache.h"

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>
#include <utility>

namespace tavel {

/// Looks for the focus of a program that has not told of it, in a thread of its own, which sleeps until it is
/// asked. What it finds goes into the cache.
class FocusSearcher {
public:
    /// The connection has to outlive this object.
    FocusSearcher(const BusConnection& bus, std::shared_ptr<FocusCache> cache)
        : bus_(bus), cache_(std::move(cache)), thread_([this](const std::stop_token& stop) { run(stop); }) {}

    /// Has that process looked through, if it is not the one whose element is known. Of several requests that
    /// come while it is looking, the last one counts.
    void request(std::int32_t process);

    /// The same at once, in the calling thread, until `end`.
    void search(std::int32_t process, BusConnection::Clock::time_point end, const std::stop_token& stop = {});

private:
    void run(const std::stop_token& stop);

    const BusConnection& bus_;
    const std::shared_ptr<FocusCache> cache_;
    std::mutex mutex_;
    std::condition_variable_any requested_;
    std::optional<std::int32_t> request_;
    std::jthread thread_; // the last member: it uses the others
};

} // namespace tavel
