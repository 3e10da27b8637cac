#pragma once

#include "Linux/Selections/TransferTimeOuts.h"
#include "Support/Bytes.h"

#include <chrono>
#include <cstddef>
#include <optional>

namespace tavel {

/// The state of one transfer in increments to a requestor (ICCCM 2.7.2). It makes no requests: the server
/// announces the transfer in the requestor's property, and writes an increment there after each deletion.
class OutgoingTransfer {
public:
    using Clock = InactivityDeadline::Clock;

    enum class State {
        announced, // the requestor has not started the transfer
        sending,   // an increment is in the property
        ending,    // the empty increment, which ends the value, is in the property
        over,      // the requestor has taken everything, or the transfer was given up
    };

    /// The deadline passes when the requestor takes nothing for `timeOut`.
    OutgoingTransfer(Bytes value, std::size_t incrementBytes, Clock::time_point now, Clock::duration timeOut);

    State state() const { return state_; }

    /// The requestor has deleted the property. Returns the next increment for it; the last one is empty.
    /// nullopt when the transfer is over.
    std::optional<Bytes> propertyDeleted(Clock::time_point now);

    /// Ends the transfer and releases the value.
    void giveUp();

    const Bytes& value() const { return value_; }

    Clock::time_point deadline() const { return deadline_.end(); }

private:
    Bytes value_;
    std::size_t incrementBytes_;
    InactivityDeadline deadline_;
    std::size_t sent_ = 0;
    State state_ = State::announced;
};

} // namespace tavel
