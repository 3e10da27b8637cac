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

/// Searches for the focus of programs that have not reported it, in a thread that sleeps between requests.
/// Puts the results into the cache.
class FocusSearcher {
public:
    /// The connection must outlive this object.
    FocusSearcher(const BusConnection& bus, std::shared_ptr<FocusCache> cache)
        : bus_(bus), cache_(std::move(cache)), thread_([this](const std::stop_token& stop) { run(stop); }) {}

    /// Requests a search in the process, unless the cache already knows an element of it. During a search,
    /// only the latest request is kept.
    void request(std::int32_t process);

    /// Searches at once, in the calling thread, until `end`.
    void search(std::int32_t process, BusConnection::Clock::time_point end, const std::stop_token& stop = {});

private:
    void run(const std::stop_token& stop);

    const BusConnection& bus_;
    const std::shared_ptr<FocusCache> cache_;
    std::mutex mutex_;
    std::condition_variable_any requested_;
    std::optional<std::int32_t> request_;
    std::jthread thread_; // the last member, because the thread uses the others
};

} // namespace tavel
