#pragma once

#include "Linux/X11/Selections/ForeignContent.h"
#include "Linux/X11/Selections/SelectionReader.h"
#include "Linux/X11/Selections/SelectionServer.h"
#include "Linux/X11/Selections/TransferTimeOuts.h"
#include "Linux/X11/X11Connection.h"
#include "Platform/PasteboardItems.h"

#include <xcb/xcb.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace tavel {

/// The state of one selection, shared by all pasteboards of this process that use it.
struct X11Selection {
    X11Selection(X11Connection& connection, SelectionReader& reader, const TransferTimeOuts& timeOuts,
                 xcb_atom_t selectionAtom)
        : atom(selectionAtom), foreign(connection, reader, timeOuts, selectionAtom) {}

    const xcb_atom_t atom;

    /// Ownership changes, ours included, since we began watching. An owner that exits is no change.
    std::int64_t changeCount = 0;

    xcb_window_t owner = 0; // 0: none

    /// Our content while we own the selection, otherwise null.
    std::shared_ptr<const OwnedContent> owned;
    xcb_timestamp_t ownedSince = 0;

    /// The content that becomes `owned` when the server reports our ownership since `offeredAt`.
    std::shared_ptr<const OwnedContent> offered;
    xcb_timestamp_t offeredAt = 0;

    /// The change count with which the server reported it; nullopt before.
    std::optional<std::int64_t> offeredCount;

    /// What another program owns. Its change count is the one that has been noticed.
    ForeignContent foreign;

    /// Runs after the noticed change count has moved from this one. Empty: nobody wants to know.
    std::function<void()> noticed;
    std::int64_t lastNoticed = -1;
};

/// The selections of an X server that the pasteboards of this process use. Waits for the server, but for no
/// other program, except in the two operations for the process's end. One thread.
class X11Selections {
public:
    using Clock = X11Connection::Clock;
    /// The names of the atoms that the clipboard needs from the beginning, to open a connection with.
    static std::vector<std::string> atomNames();

    X11Selections(std::unique_ptr<X11Connection> connection, const TransferTimeOuts& timeOuts);
    X11Selections(const X11Selections&) = delete;
    X11Selections& operator=(const X11Selections&) = delete;
    ~X11Selections() = default;

    X11Connection& connection() { return *connection_; }

    /// The selection of the pasteboard of that name; CLIPBOARD without a name. Watches it from the first call
    /// on. Valid as long as this object.
    X11Selection& selection(const std::optional<std::string>& pasteboardName);

    /// Handles all events from before now. One round trip.
    void synchronize() { connection_->synchronize(); }

    /// Becomes the owner of the selection with this content. Gives the change count of doing so, also if
    /// another program has taken the selection since. nullopt if other programs keep the server from it each
    /// time, or if the server is lost.
    std::optional<std::int64_t> own(X11Selection& selection, OwnedContent content);

    /// Whether this process owns a selection with content, or still has a transfer to finish.
    bool isServing() const;

    /// Gives owners a moment to finish what they send. Some programs fail when a requestor has ended.
    void letOwnersFinish();

    /// Asks the clipboard manager, if one runs, to save this process's content of CLIPBOARD (freedesktop.org,
    /// clipboard manager protocol, SAVE_TARGETS). Waits for it.
    void handOver();

    /// Whether `proceed` has something to do, besides at the earliest deadline, which is nullopt without one.
    bool hasWork() const;
    std::optional<Clock::time_point> nextDeadline() const;

    /// Goes on with all transfers as far as that needs no wait for another program, and tells callers of what
    /// has ended. To be called after events were dispatched.
    void proceed(Clock::time_point now);

private:
    void handleEvent(const xcb_generic_event_t& event);
    void handleExcess(const xcb_generic_event_t& event);
    void handleOwnerChange(const xcb_generic_event_t& event);
    std::optional<OwnedSelection> ownedSelection(xcb_atom_t atom) const;
    void readOnWhile(const std::function<bool()>& isOpen, Clock::duration longest);

    const TransferTimeOuts timeOuts_;
    std::unique_ptr<X11Connection> connection_;
    std::map<xcb_atom_t, X11Selection> selections_;
    SelectionReader reader_;
    SelectionServer server_;
};

} // namespace tavel
