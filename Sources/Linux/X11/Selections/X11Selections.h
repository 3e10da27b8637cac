#pragma once

#include "Linux/Contents/SelectionText.h"
#include "Linux/X11/DecisionDeadline.h"
#include "Linux/X11/Selections/SelectionReader.h"
#include "Linux/X11/Selections/SelectionServer.h"
#include "Linux/X11/Selections/TransferTimeOuts.h"
#include "Linux/X11/X11Connection.h"
#include "Platform/PasteboardItems.h"

#include <xcb/xcb.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavel {

/// The state of one selection, shared by all pasteboards of this process that use it.
struct X11Selection {
    xcb_atom_t atom = 0;

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

    /// The targets of another program's content; nullopt before the first request for them.
    std::optional<std::vector<std::string>> targets;

    /// What is left of the time-out for all reads of the current content together.
    std::chrono::steady_clock::duration waitingTimeLeft{};
};

/// The selections of an X server that the pasteboards of this process use. One thread.
class X11Selections {
public:
    using Clock = X11Connection::Clock;
    X11Selections(std::unique_ptr<X11Connection> connection, const TransferTimeOuts& timeOuts);
    X11Selections(const X11Selections&) = delete;
    X11Selections& operator=(const X11Selections&) = delete;
    ~X11Selections() = default;

    X11Connection& connection() { return *connection_; }

    /// Limits waits for owners to the deadline of a pending key decision. `deadline` must outlive this
    /// object.
    void limitBy(const DecisionDeadline& deadline) { deadline_ = &deadline; }

    /// The selection of the pasteboard of that name; CLIPBOARD without a name. Watches it from the first call
    /// on. Valid as long as this object.
    X11Selection& selection(const std::optional<std::string>& pasteboardName);

    /// Handles all events from before now. One round trip.
    void synchronize() { connection_->synchronize(); }

    /// Becomes the owner of the selection with this content. Gives the change count of doing so, also if
    /// another program has taken the selection since. nullopt if other programs keep the server from it each
    /// time, or if the server is lost.
    std::optional<std::int64_t> own(X11Selection& selection, OwnedContent content);

    /// The targets of another program's content: as many as its types and its targets of the protocol may be,
    /// without those whose names are too long for a type. Waits for that program the first time.
    std::vector<std::string> targets(X11Selection& selection);

    /// Another program's value for one of its targets, or the first `limit` + 1 bytes of it. Waits for it.
    /// nullopt as for SelectionReader::read.
    std::optional<SelectionValue> read(X11Selection& selection, const std::string& target, std::size_t limit);

    /// Whether this process owns a selection with content, or still has a transfer to finish.
    bool isServing() const;

    /// Asks the clipboard manager, if one runs, to save this process's content of CLIPBOARD (freedesktop.org,
    /// clipboard manager protocol, SAVE_TARGETS). Waits for it.
    void handOver();

    /// The earliest deadline of a transfer, at which `giveUpOverdue` is due; nullopt without a transfer.
    std::optional<Clock::time_point> nextDeadline() const { return server_.nextDeadline(); }
    void giveUpOverdue(Clock::time_point now) { server_.giveUpOverdue(now); }

private:
    using Targets = std::vector<std::string>;

    Targets targetNames(const Bytes& list);
    void handleEvent(const xcb_generic_event_t& event);
    void handleExcess(const xcb_generic_event_t& event);
    void handleOwnerChange(const xcb_generic_event_t& event);
    std::optional<SelectionReader::Answer> ask(X11Selection& selection, xcb_atom_t target, std::size_t limit);
    std::optional<OwnedSelection> ownedSelection(xcb_atom_t atom) const;

    TransferTimeOuts timeOuts_;
    const DecisionDeadline* deadline_ = nullptr; // null: no limit
    std::unique_ptr<X11Connection> connection_;
    std::map<xcb_atom_t, X11Selection> selections_;
    SelectionReader reader_;
    SelectionServer server_;
};

} // namespace tavel
