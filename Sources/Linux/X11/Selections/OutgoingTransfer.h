#pragma once

#include "Linux/X11/Selections/TransferTimeOuts.h"
#include "Support/Bytes.h"

#include <chrono>
#include <cstddef>
#include <optional>

namespace tavel {

/// A value on its way to one requestor in increments (ICCCM 2.7.2). It only keeps account: whoever owns it
/// has announced the transfer in the requestor's property, and puts there what each deletion asks for.
class OutgoingTransfer {
public:
    using Clock = InactivityDeadline::Clock;

    enum class State {
        announced, // the requestor has not begun
        sending,   // an increment is in the property
        ending,    // the empty increment is, which says that there is no more
        over,      // the requestor has taken everything, or the transfer was given up
    };

    /// The deadline passes when the requestor takes nothing for `timeOut`.
    OutgoingTransfer(Bytes value, std::size_t incrementBytes, Clock::time_point now, Clock::duration timeOut);

    State state() const { return state_; }

    /// The requestor has deleted the property: gives what to put there now, of which the last is empty.
    /// Nothing when the transfer is over.
    std::optional<Bytes> propertyDeleted(Clock::time_point now);

    /// The requestor is gone, or its time is over.
    void giveUp();

    Clock::time_point deadline() const { return deadline_.end(); }

private:
    Bytes value_;
    std::size_t incrementBytes_;
    InactivityDeadline deadline_;
    std::size_t sent_ = 0;
    State state_ = State::announced;
};

} // namespace tavel
