#include "Linux/X11/Focus/FocusSearcher.h"

#include "Linux/X11/Focus/FocusSearch.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace tavel {

namespace {

/// Nothing waits for a search in the background, but a later result is probably out of date.
constexpr std::chrono::seconds searchTimeOut{1};

constexpr std::chrono::milliseconds processTimeOut{40};

} // namespace

void FocusSearcher::request(std::int32_t process) {
    {
        const std::lock_guard lock(mutex_);
        request_ = process;
    }
    requested_.notify_one();
}

void FocusSearcher::run(const std::stop_token& stop) {
    for (;;) {
        std::optional<std::int32_t> process;
        {
            std::unique_lock lock(mutex_);
            if (!requested_.wait(lock, stop, [this] { return request_.has_value(); }))
                return;
            process = std::exchange(request_, std::nullopt);
        }
        search(*process, BusConnection::Clock::now() + searchTimeOut, stop);
    }
}

void FocusSearcher::search(std::int32_t process, BusConnection::Clock::time_point end,
                           const std::stop_token& stop) {
    using Clock = BusConnection::Clock;
    const std::uint64_t newsCount = cache_->newsCount();
    const auto known = cache_->current();
    if (known && bus_.processOf(known->program, std::min(end, Clock::now() + processTimeOut)) == process)
        return;
    if (auto element = searchFocus(bus_, process, end, stop))
        cache_->found(std::move(*element), newsCount);
}

} // namespace tavel
