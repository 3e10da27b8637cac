#pragma once

#include "Linux/Selections/TransferTimeOuts.h"
#include "Linux/X11/Selections/IncomingTransfer.h"
#include "Linux/X11/X11Connection.h"

#include <xcb/xcb.h>

#include <cstddef>
#include <cstdint>
#include <list>
#include <optional>
#include <vector>

namespace tavel {

/// Requests conversions from the owners of selections and takes the values in as they come. Waits for the
/// server, but for no owner. One thread.
class SelectionReader {
public:
    using Clock = X11Connection::Clock;

    /// Names a request for as long as this object lives.
    using Ticket = std::uint64_t;

    struct Request {
        xcb_atom_t selection;
        xcb_atom_t target;
        xcb_timestamp_t time;
        std::size_t limit; // bytes; of a larger value the answer is a beginning
    };

    struct Answer {
        xcb_atom_t type;
        int format;
        Bytes bytes;
        bool isCut; // more than the limit came: these are the first `limit` + 1 bytes
    };

    /// The names of the atoms that a reader needs from the beginning.
    static std::vector<std::string> atomNames();

    SelectionReader(X11Connection& connection, const TransferTimeOuts& timeOuts);

    /// Asks for one target.
    Ticket ask(const Request& request);

    /// Like `ask`, with atoms as the request's parameter in its property, as SAVE_TARGETS needs them.
    Ticket askWithParameter(const Request& request, const std::vector<xcb_atom_t>& parameter);

    /// Whether the value has come, or will not come: after a refusal, malformed data, the owner's exit, and
    /// at the deadline of OwnerDeadline.
    bool isDecided(Ticket ticket) const;

    /// Whether the owner was given up at its deadline.
    bool hasTimedOut(Ticket ticket) const;

    /// Ends the request, and gives the value if it has come. What comes later is let through unread, so that
    /// an owner that serves one transfer at a time can finish.
    std::optional<Answer> take(Ticket ticket);

    /// The selection has a new owner or none: gives up all its transfers.
    void abandon(xcb_atom_t selection);

    /// Whether owners may still answer requests that have been given up.
    bool awaitsLateAnswers() const;

    /// Whether an owner may still write to a property of this process's.
    bool hasOpenTransfers() const;

    /// Whether a value waits in a property for `readOn`.
    bool hasUnread() const;

    /// Takes in the next part of each such value.
    void readOn();

    /// The earliest deadline of an owner, at which `giveUpOverdue` is due; nullopt without one.
    std::optional<Clock::time_point> nextDeadline() const;
    void giveUpOverdue(Clock::time_point now);

    void handleAnswer(const xcb_selection_notify_event_t& answer);

    /// `requestNumber` is the event's full sequence number: the last request before the change.
    void handlePropertyChange(const xcb_property_notify_event_t& change, std::uint32_t requestNumber);

private:
    struct Transfer {
        Ticket ticket;
        Request request;
        xcb_atom_t property;
        IncomingTransfer state;
        OwnerDeadline deadline;
        bool isAwaited = true; // until `take`
        bool isAnswered = false;
        bool hasTimedOut = false;
        std::optional<std::size_t> unread = std::nullopt; // offset of what is left in the property
        std::uint32_t lastReading = 0; // sequence number of the last GetProperty or DeleteProperty
    };

    using Position = std::list<Transfer>::iterator;

    static bool isDecided(const Transfer& transfer);
    std::list<Transfer>::const_iterator find(Ticket ticket) const;
    Transfer& begin(const Request& request);
    Ticket convert(const Transfer& transfer);
    void beginReading(Transfer& transfer);
    void readPart(Transfer& transfer);
    void letThrough(Transfer& transfer);
    PropertyPart fetchPart(Transfer& transfer, std::size_t offset, std::size_t length);
    static bool canRefuse(const Transfer& transfer, xcb_timestamp_t time);
    Position transferFor(const xcb_selection_notify_event_t& answer);
    xcb_atom_t freeProperty();
    bool isInUse(xcb_atom_t property) const;

    X11Connection& connection_;
    const TransferTimeOuts timeOuts_;
    Ticket lastTicket_ = 0;
    std::vector<xcb_atom_t> properties_; // least recently used first
    xcb_atom_t incrementalType_;
    std::list<Transfer> transfers_; // oldest first
};

} // namespace tavel
