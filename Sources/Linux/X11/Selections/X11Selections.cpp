#include "Linux/X11/Selections/X11Selections.h"

#include "Linux/Contents/TargetNames.h"
#include "Linux/X11/Selections/SelectionName.h"
#include "Linux/X11/Selections/X11OwnerQuestions.h"
#include "Platform/PasteboardTypes.h"

#include <xcb/xfixes.h>

#include <algorithm>
#include <utility>

namespace tavel {

namespace {

/// The clipboard manager answers with nothing that is of use.
constexpr std::size_t noAnswer = 0;

/// The attempts to take a selection that other programs take at the same moment.
constexpr int mostAttempts = 3;

} // namespace

void X11Selection::synchronize() {
    selections_.synchronize();
}

bool X11Selection::isLost() const {
    return selections_.isLost();
}

std::optional<std::int64_t> X11Selection::own(OwnedContent content) {
    return selections_.own(*this, std::move(content));
}

std::vector<std::string> X11Selections::atomNames() {
    // xsel falls back to older targets if the server does not know the names of texts.
    std::vector<std::string> names = targetName::offeredFor(std::string(pasteboardType::string));
    for (std::vector<std::string>& more :
         std::array{SelectionReader::atomNames(), SelectionServer::atomNames()})
        names.insert(names.end(), more.begin(), more.end());
    names.push_back(selectionNameOf(std::nullopt));
    return names;
}

X11Selections::X11Selections(std::unique_ptr<X11Connection> connection, const TransferTimeOuts& timeOuts)
    : timeOuts_(timeOuts), connection_(std::move(connection)), reader_(*connection_, timeOuts_),
      server_(
          *connection_, [this](xcb_atom_t atom) { return ownedSelection(atom); },
          timeOuts.requestorInactivity) {
    connection_->atoms(atomNames()); // creates those of texts
    connection_->setEventHandler([this](const xcb_generic_event_t& event) { handleEvent(event); });
    connection_->setExcessHandler([this](const xcb_generic_event_t& event) { handleExcess(event); });
}

Selection& X11Selections::selection(const std::optional<std::string>& pasteboardName) {
    const xcb_atom_t atom = connection_->atom(selectionNameOf(pasteboardName));
    if (const auto known = selections_.find(atom); known != selections_.end())
        return known->second;
    X11Selection& selection =
        selections_
            .try_emplace(atom, *this, std::make_unique<X11OwnerQuestions>(*connection_, reader_, atom),
                         timeOuts_, atom)
            .first->second;
    xcb_xfixes_select_selection_input(connection_->get(), connection_->window(), atom,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    // An owner refuses requests with a time before its own. No event has told the current owner's time, so
    // the latest time has to be fetched.
    connection_->requestTime();
    const auto cookie = xcb_get_selection_owner(connection_->get(), atom);
    const auto reply = connection_->await(cookie, xcb_get_selection_owner_reply);
    selection.owner = reply != nullptr ? reply->owner : xcb_window_t{XCB_NONE};
    connection_->awaitTime();
    if (selection.changeCount == 0 && selection.owner != XCB_NONE)
        selection.foreign.replace(0, Clock::now());
    else if (selection.changeCount == 0)
        selection.foreign.replaceByOwn(0); // nobody's
    return selection;
}

std::optional<std::int64_t> X11Selections::own(X11Selection& selection, OwnedContent content) {
    const auto shared = std::make_shared<const OwnedContent>(std::move(content));
    for (int attempt = 0; attempt < mostAttempts && !connection_->isLost(); ++attempt) {
        const xcb_timestamp_t now = connection_->fetchTime();
        if (now == XCB_CURRENT_TIME)
            break;
        selection.offered = shared;
        selection.offeredAt = now;
        selection.offeredCount.reset();
        xcb_set_selection_owner(connection_->get(), connection_->window(), selection.atom, now);
        // The event about the new owner arrives before this reply, in the right order with the changes of
        // other programs. Without it, the server has ignored the request: another program has taken the
        // selection at a later time.
        connection_->synchronize();
        if (selection.offeredCount)
            return selection.offeredCount;
    }
    selection.offered.reset();
    return std::nullopt;
}

bool X11Selections::hasWork() const {
    // Events that xcb read together with a reply are in its queue, and do not make the descriptor readable.
    return connection_->hasQueuedEvent() || reader_.hasUnread() ||
           std::ranges::any_of(selections_, [](const auto& entry) { return entry.second.hasWork(); });
}

std::optional<X11Selections::Clock::time_point> X11Selections::nextDeadline() const {
    auto next = server_.nextDeadline();
    const auto limit = [&next](std::optional<Clock::time_point> one) {
        if (one)
            next = std::min(next.value_or(*one), *one);
    };
    limit(reader_.nextDeadline());
    for (const auto& entry : selections_)
        limit(entry.second.foreign.nextDeadline());
    return next;
}

void X11Selections::dispatch() {
    connection_->dispatchEvents();
    const auto now = Clock::now();
    server_.giveUpOverdue(now);
    reader_.giveUpOverdue(now);
    reader_.readOn();
    for (auto& entry : selections_)
        entry.second.proceed(now);
    for (auto& entry : selections_)
        entry.second.tell();
    flush();
}

bool X11Selections::isServing() const {
    return !connection_->isLost() &&
           (server_.isServing() || std::ranges::any_of(selections_, [](const auto& entry) {
                return entry.second.owned != nullptr && !entry.second.owned->items.empty();
            }));
}

void X11Selections::letOwnersFinish() {
    readOnWhile([this] { return reader_.hasOpenTransfers(); }, timeOuts_.lastAnswers);
}

void X11Selections::handOver() {
    const auto clipboard = selections_.find(connection_->atom(selectionNameOf(std::nullopt)));
    if (clipboard == selections_.end() || connection_->isLost())
        return;
    connection_->synchronize();
    const std::shared_ptr<const OwnedContent> content = clipboard->second.owned;
    if (content == nullptr || content->items.empty())
        return;
    // Without a clipboard manager, the X server refuses at once.
    const auto ticket =
        reader_.askWithParameter({connection_->atom("CLIPBOARD_MANAGER"), connection_->atom("SAVE_TARGETS"),
                                  connection_->latestTime(), noAnswer},
                                 connection_->atoms(contentTargets(content->items)));
    readOnWhile([&] { return !reader_.isDecided(ticket); }, timeOuts_.clipboardManager);
}

void X11Selections::readOnWhile(const std::function<bool()>& isOpen, Clock::duration longest) {
    const auto deadline = Clock::now() + longest;
    while (isOpen() && Clock::now() < deadline && !connection_->isLost()) {
        connection_->waitForEvents(deadline);
        reader_.readOn();
    }
}

std::optional<OwnedSelection> X11Selections::ownedSelection(xcb_atom_t atom) const {
    const auto found = selections_.find(atom);
    if (found == selections_.end() || found->second.owned == nullptr)
        return std::nullopt;
    return OwnedSelection{found->second.owned, found->second.ownedSince};
}

/// A flood: one program's requests are refused, and the count of changes stays exact. Everything else that
/// comes then is lost; a transfer that waits for it runs into its time-out.
void X11Selections::handleExcess(const xcb_generic_event_t& event) {
    if (event.response_type == connection_->selectionOwnerEvent())
        handleOwnerChange(event);
    else if ((event.response_type & ~sentByProgram) == XCB_SELECTION_REQUEST)
        server_.refuse(reinterpret_cast<const xcb_selection_request_event_t&>(event));
}

void X11Selections::handleEvent(const xcb_generic_event_t& event) {
    // Requests and answers may come from programs (ICCCM 2.2); all other events count only if the server made
    // them.
    const int kind = event.response_type;
    if (kind == connection_->selectionOwnerEvent()) {
        handleOwnerChange(event);
    } else if ((kind & ~sentByProgram) == XCB_SELECTION_REQUEST) {
        server_.handleRequest(reinterpret_cast<const xcb_selection_request_event_t&>(event));
    } else if ((kind & ~sentByProgram) == XCB_SELECTION_NOTIFY) {
        reader_.handleAnswer(reinterpret_cast<const xcb_selection_notify_event_t&>(event));
    } else if (kind == XCB_PROPERTY_NOTIFY) {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        reader_.handlePropertyChange(change, event.full_sequence);
        server_.handlePropertyChange(change);
    } else if (kind == XCB_DESTROY_NOTIFY) {
        server_.handleDestruction(reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window);
    } else if (kind == 0) {
        // An error. Only a requestor's destroyed window needs handling.
        const auto& error = reinterpret_cast<const xcb_value_error_t&>(event);
        if (error.error_code == XCB_WINDOW)
            server_.handleDestruction(error.bad_value);
    }
}

void X11Selections::handleOwnerChange(const xcb_generic_event_t& event) {
    const auto& change = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
    connection_->noteTime(change.timestamp);
    const auto found = selections_.find(change.selection);
    if (found == selections_.end())
        return;
    X11Selection& selection = found->second;
    selection.owner = change.owner;
    selection.owned.reset();
    reader_.abandon(selection.atom);
    if (change.owner == XCB_NONE) {
        selection.foreign.vanish();
        return;
    }
    ++selection.changeCount;
    if (change.owner == connection_->window() && change.selection_timestamp == selection.offeredAt) {
        selection.owned = std::exchange(selection.offered, nullptr);
        selection.ownedSince = selection.offeredAt;
        selection.offeredCount = selection.changeCount;
        selection.foreign.replaceByOwn(selection.changeCount);
    } else {
        selection.foreign.replace(selection.changeCount, Clock::now());
    }
}

} // namespace tavel
