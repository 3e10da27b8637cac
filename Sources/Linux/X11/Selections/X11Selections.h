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
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavel {

/// What is known of one selection, for all pasteboards of this process that are that selection.
struct X11Selection {
    using Items = pasteboardItems::Items;

    xcb_atom_t atom = 0;

    /// How many times somebody, this process included, has taken the selection since this process watches it.
    /// An owner that disappears makes no new content.
    std::int64_t changeCount = 0;

    xcb_window_t owner = 0; // 0: nobody

    /// The content, while this process owns the selection.
    std::shared_ptr<const Items> owned;
    xcb_timestamp_t ownedSince = 0;

    /// The content that becomes `owned` with the news of this process's taking the selection at that time.
    std::shared_ptr<const Items> offered;
    xcb_timestamp_t offeredAt = 0;

    /// The targets of another program's content, once asked for.
    std::optional<std::vector<std::string>> targets;

    /// What is left of the time-out for all reads of that content.
    std::chrono::steady_clock::duration waitingTimeLeft{};
};

/// The selections of an X server, as far as pasteboards of this process use them. One thread.
class X11Selections {
public:
    using Clock = X11Connection::Clock;
    using Items = pasteboardItems::Items;

    X11Selections(std::unique_ptr<X11Connection> connection, const TransferTimeOuts& timeOuts);
    X11Selections(const X11Selections&) = delete;
    X11Selections& operator=(const X11Selections&) = delete;
    ~X11Selections() = default;

    X11Connection& connection() { return *connection_; }

    /// While a decision is being made, owners are waited for no longer than that. It must outlive this
    /// object.
    void limitBy(const DecisionDeadline& deadline) { deadline_ = &deadline; }

    /// The selection behind the pasteboard of that name; without a name the general one, CLIPBOARD.
    X11Selection& selection(const std::optional<std::string>& pasteboardName);

    /// Takes in everything that happened until now. One round trip.
    void synchronize() { connection_->synchronize(); }

    /// Takes the selection over with this content. False if another program keeps it, or the server is lost.
    bool own(X11Selection& selection, Items items);

    /// The targets of another program's content. Waits for that program the first time.
    std::vector<std::string> targets(X11Selection& selection);

    /// Another program's value for one of its targets. Waits for it.
    std::optional<SelectionValue> read(X11Selection& selection, const std::string& target);

    /// Whether other programs depend on this process for a content, or a part of one.
    bool isServing() const;

    /// Gives what this process owns of CLIPBOARD to the clipboard manager, if there is one
    /// (freedesktop.org, ClipboardManager specification).
    void handOver();

    /// When `giveUpOverdue` has something to do at the earliest.
    std::optional<Clock::time_point> nextDeadline() const { return server_.nextDeadline(); }
    void giveUpOverdue(Clock::time_point now) { server_.giveUpOverdue(now); }

private:
    void handleEvent(const xcb_generic_event_t& event);
    void handleOwnerChange(const xcb_generic_event_t& event);
    std::optional<SelectionReader::Answer> ask(X11Selection& selection, xcb_atom_t target, std::size_t limit);
    std::optional<OwnedSelection> ownedSelection(xcb_atom_t atom) const;

    TransferTimeOuts timeOuts_;
    const DecisionDeadline* deadline_ = nullptr; // nothing limits
    std::unique_ptr<X11Connection> connection_;
    std::map<xcb_atom_t, X11Selection> selections_;
    SelectionReader reader_;
    SelectionServer server_;
};

} // namespace tavel
