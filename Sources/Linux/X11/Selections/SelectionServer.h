#pragma once

#include "Linux/Contents/OwnedTargets.h"
#include "Linux/Selections/OwnedContent.h"
#include "Linux/X11/Selections/OutgoingTransfer.h"
#include "Linux/X11/X11Connection.h"

#include <xcb/xcb.h>

#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>

namespace tavel {

/// The content of a selection that this process owns.
struct OwnedSelection {
    std::shared_ptr<const OwnedContent> content;
    xcb_timestamp_t since; // when this process became the owner
};

/// Answers the requestors of selections that this process owns (ICCCM 2.2 to 2.7). Never waits for a
/// requestor: each transfer proceeds when its requestor deletes the property. One thread.
class SelectionServer {
public:
    using Clock = OutgoingTransfer::Clock;

    /// The content of the selection; nullopt if this process does not own it.
    using Lookup = std::function<std::optional<OwnedSelection>(xcb_atom_t selection)>;

    /// The names of the atoms that a server needs from the beginning.
    static std::vector<std::string> atomNames();

    /// Gives up a transfer whose requestor takes nothing for `requestorTimeOut`.
    SelectionServer(X11Connection& connection, Lookup lookup, Clock::duration requestorTimeOut);

    void handleRequest(const xcb_selection_request_event_t& request);
    void handlePropertyChange(const xcb_property_notify_event_t& change);

    /// Answers that the request cannot be fulfilled. Waits for nothing, and leaves the answer to the next
    /// flush.
    void refuse(const xcb_selection_request_event_t& request) { notify(request, XCB_ATOM_NONE); }

    /// The window is destroyed: drops its transfers.
    void handleDestruction(xcb_window_t window);

    bool isServing() const { return !transfers_.empty(); }

    /// The earliest deadline of a transfer, at which `giveUpOverdue` is due; nullopt without a transfer.
    std::optional<Clock::time_point> nextDeadline() const;
    void giveUpOverdue(Clock::time_point now);

private:
    /// One target to convert into one property.
    struct Conversion {
        xcb_window_t requestor;
        xcb_atom_t target;
        xcb_atom_t property;
    };

    struct Transfer {
        xcb_window_t requestor;
        xcb_atom_t property;
        xcb_atom_t type;
        int format;
        OutgoingTransfer state;
    };

    bool convert(const OwnedSelection& owned, const Conversion& conversion);
    bool convertMultiple(const OwnedSelection& owned, const Conversion& conversion);
    std::vector<xcb_atom_t> offeredAtoms(const OwnedSelection& owned);
    void setAtoms(const Conversion& conversion, xcb_atom_t type, const std::vector<xcb_atom_t>& atoms);
    bool deliver(const Conversion& conversion, const ValueForm& form, const Bytes& bytes);
    bool hasRoomFor(xcb_window_t requestor) const;
    void makeRoomFor(const Bytes& bytes);
    std::size_t bytesHeldWith(const Bytes& bytes) const;
    void endTransfer(const Conversion& conversion);
    void setProperty(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type, int format,
                     const Bytes& bytes);
    void notify(const xcb_selection_request_event_t& request, xcb_atom_t property);
    void removeTransfers(const std::function<bool(const Transfer&)>& condition);

    X11Connection& connection_;
    Lookup lookup_;
    Clock::duration requestorTimeOut_;
    xcb_atom_t targets_;
    xcb_atom_t timestamp_;
    xcb_atom_t multiple_;
    xcb_atom_t saveTargets_;
    xcb_atom_t atomPair_;
    xcb_atom_t incremental_;
    xcb_atom_t null_;
    std::list<Transfer> transfers_;
};

} // namespace tavel
