#include "Linux/X11/Focus/FocusCache.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tavel {

namespace {

/// Bounds the list, as some programs never report a loss.
constexpr std::size_t mostHolders = 8;

} // namespace

void FocusCache::gained(AccessibleElement element) {
    const std::lock_guard lock(mutex_);
    ++newsCount_;
    put(std::move(element));
}

void FocusCache::lost(const AccessibleElement& element) {
    const std::lock_guard lock(mutex_);
    ++newsCount_;
    // The report of the loss may come after the report of the new focus.
    if (!holders_.empty() && holders_.back() == element)
        isLastLost_ = true;
    std::erase(holders_, element);
}

std::optional<AccessibleElement> FocusCache::current() const {
    const std::lock_guard lock(mutex_);
    return isLastLost_ ? std::nullopt : std::optional(holders_.back());
}

std::optional<AccessibleElement> FocusCache::previous() const {
    const std::lock_guard lock(mutex_);
    if (isLastLost_)
        return std::nullopt;
    const auto earlier =
        std::find_if(std::next(holders_.rbegin()), holders_.rend(), [this](const AccessibleElement& holder) {
            return holder.program == holders_.back().program;
        });
    return earlier == holders_.rend() ? std::nullopt : std::optional(*earlier);
}

std::uint64_t FocusCache::newsCount() const {
    const std::lock_guard lock(mutex_);
    return newsCount_;
}

void FocusCache::found(AccessibleElement element, std::uint64_t newsCount) {
    const std::lock_guard lock(mutex_);
    if (newsCount_ == newsCount)
        put(std::move(element));
}

void FocusCache::put(AccessibleElement element) {
    std::erase(holders_, element);
    if (holders_.size() == mostHolders)
        holders_.erase(holders_.begin());
    holders_.push_back(std::move(element));
    isLastLost_ = false;
}

} // namespace tavel
