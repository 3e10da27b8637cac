#pragma once

#include "Linux/Selections/Selection.h"

#include <chrono>
#include <optional>
#include <string>

namespace tavel {

/// The selections of a display server that the pasteboards of this process use, and the connection to it.
/// Waits for the server in `selection` and `synchronize`, and for no other program. One thread.
class DisplaySelections {
public:
    using Clock = Selection::Clock;

    virtual ~DisplaySelections() = default;

    /// The selection of the pasteboard of that name, which this display server must have; the general one
    /// without a name. Watches it from the first call on. Valid as long as this object.
    virtual Selection& selection(const std::optional<std::string>& pasteboardName) = 0;

    /// Handles all events from before now. One round trip.
    virtual void synchronize() = 0;

    virtual bool isLost() const = 0;

    /// Whether this process owns a selection with content, or still has a transfer to finish.
    virtual bool isServing() const = 0;

    /// Becomes readable when there is something to dispatch.
    virtual int descriptor() const = 0;

    /// Sends what waits to be sent. Does not wait.
    virtual void flush() = 0;

    /// Whether `dispatch` has something to do, besides when the descriptor is readable and at the earliest
    /// deadline, which is nullopt without one.
    virtual bool hasWork() const = 0;
    virtual std::optional<Clock::time_point> nextDeadline() const = 0;

    /// Handles the events that have come, goes on with all transfers as far as that needs no wait, and tells
    /// callers of what has ended. Takes some milliseconds at most, though more may have come. Throws
    /// std::bad_alloc, and may then be called again.
    virtual void dispatch() = 0;
};

} // namespace tavel
