#pragma once

#include "Linux/Selections/DisplaySelections.h"
#include "Linux/X11/Selections/SelectionReader.h"
#include "Linux/X11/Selections/SelectionServer.h"
#include "Linux/X11/X11Connection.h"

#include <xcb/xcb.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace tavel {

class X11Selections;

/// One selection of an X server.
class X11Selection final : public Selection {
public:
    X11Selection(X11Selections& selections, std::unique_ptr<OwnerQuestions> questions,
                 const TransferTimeOuts& timeOuts, xcb_atom_t selectionAtom)
        : Selection(std::move(questions), timeOuts), atom(selectionAtom), selections_(selections) {}

    void synchronize() override;
    bool isLost() const override;
    std::optional<std::int64_t> own(OwnedContent content) override;

    const xcb_atom_t atom;

    xcb_window_t owner = 0; // 0: none

    xcb_timestamp_t ownedSince = 0;

    /// The content that becomes `owned` when the server reports our ownership since `offeredAt`.
    std::shared_ptr<const OwnedContent> offered;
    xcb_timestamp_t offeredAt = 0;

    /// The change count with which the server reported it; nullopt before.
    std::optional<std::int64_t> offeredCount;

private:
    X11Selections& selections_;
};

/// The selections of an X server that the pasteboards of this process use. Waits for the server, but for no
/// other program, except in the two operations for the process's end. One thread.
class X11Selections final : public DisplaySelections {
public:
    /// The names of the atoms that the clipboard needs from the beginning, to open a connection with.
    static std::vector<std::string> atomNames();

    X11Selections(std::unique_ptr<X11Connection> connection, const TransferTimeOuts& timeOuts);
    X11Selections(const X11Selections&) = delete;
    X11Selections& operator=(const X11Selections&) = delete;
    ~X11Selections() override = default;

    X11Connection& connection() { return *connection_; }

    /// Any name has a selection.
    Selection& selection(const std::optional<std::string>& pasteboardName) override;

    void synchronize() override { connection_->synchronize(); }
    bool isLost() const override { return connection_->isLost(); }
    bool isServing() const override;
    int descriptor() const override { return connection_->descriptor(); }
    void flush() override { xcb_flush(connection_->get()); }
    bool hasWork() const override;
    std::optional<Clock::time_point> nextDeadline() const override;
    void dispatch() override;

    /// Becomes the owner as `Selection::own` says. Fails if other programs keep the server from it each time.
    std::optional<std::int64_t> own(X11Selection& selection, OwnedContent content);

    /// Gives owners a moment to finish what they send. Some programs fail when a requestor has ended.
    void letOwnersFinish();

    /// Asks the clipboard manager, if one runs, to save this process's content of CLIPBOARD (freedesktop.org,
    /// clipboard manager protocol, SAVE_TARGETS). Waits for it.
    void handOver();

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
