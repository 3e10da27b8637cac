#include "Linux/X11/Selections/OutgoingTransfer.h"

#include <utility>

namespace tavel {

OutgoingTransfer::OutgoingTransfer(Bytes value, std::size_t incrementBytes, Clock::time_point now,
                                   Clock::duration timeOut)
    : value_(std::move(value)), incrementBytes_(incrementBytes), deadline_(timeOut, now) {}

std::optional<Bytes> OutgoingTransfer::propertyDeleted(Clock::time_point now) {
    deadline_.restart(now);
    if (state_ == State::ending)
        giveUp();
    if (state_ == State::over)
        return std::nullopt;
    Bytes increment = value_.slice(sent_, incrementBytes_);
    sent_ += increment.size();
    state_ = increment.empty() ? State::ending : State::sending;
    return increment;
}

void OutgoingTransfer::giveUp() {
    state_ = State::over;
    value_ = {};
}

} // namespace tavel
