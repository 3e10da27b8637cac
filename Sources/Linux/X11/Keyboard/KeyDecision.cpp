#include "Linux/X11/Keyboard/KeyDecision.h"

namespace tavel {

KeyVerdict KeyDecision::await() {
    std::unique_lock lock(mutex_);
    changed_.wait_until(lock, deadline_, [this] { return isOver(); });
    if (state_ == State::claimed)
        changed_.wait_until(lock, deadline_ + grace, [this] { return isOver(); });
    if (!isOver())
        state_ = State::givenUp;
    return verdict_;
}

bool KeyDecision::claim() {
    const std::lock_guard lock(mutex_);
    if (state_ != State::open || Clock::now() >= deadline_)
        return false;
    state_ = State::claimed;
    return true;
}

bool KeyDecision::answer(KeyVerdict verdict) {
    const std::lock_guard lock(mutex_);
    if (state_ != State::claimed)
        return false;
    state_ = State::answered;
    verdict_ = verdict;
    changed_.notify_all();
    return true;
}

void KeyDecision::giveUp() {
    const std::lock_guard lock(mutex_);
    if (isOver())
        return;
    state_ = State::givenUp;
    changed_.notify_all();
}

} // namespace tavel
