#include "Linux/X11/Selections/X11Selections.h"

#include "Linux/Contents/TargetNames.h"
#include "Linux/X11/Selections/SelectionName.h"
#include "Platform/PasteboardTypes.h"

#include <xcb/xfixes.h>

#include <algorithm>
#include <cstring>
#include <unordered_set>
#include <utility>

namespace tavel {

namespace {

/// Besides its types an owner offers targets of the protocol.
constexpr std::size_t mostProtocolTargets = 16;
constexpr std::size_t largestTargetListBytes =
    (pasteboardType::mostTypes + mostProtocolTargets) * sizeof(xcb_atom_t);

/// The attempts to take a selection that other programs take at the same moment.
constexpr int mostAttempts = 3;

} // namespace

X11Selections::X11Selections(std::unique_ptr<X11Connection> connection, const TransferTimeOuts& timeOuts)
    : timeOuts_(timeOuts), connection_(std::move(connection)), reader_(*connection_),
      server_(
          *connection_, [this](xcb_atom_t atom) { return ownedSelection(atom); },
          timeOuts.requestorInactivity) {
    // Creates the atoms: xsel falls back to older targets if the server does not know these names.
    connection_->atoms(targetName::offeredFor(std::string(pasteboardType::string)));
    connection_->setEventHandler([this](const xcb_generic_event_t& event) { handleEvent(event); });
    connection_->setExcessHandler([this](const xcb_generic_event_t& event) { handleExcess(event); });
}

X11Selection& X11Selections::selection(const std::optional<std::string>& pasteboardName) {
    const xcb_atom_t atom = connection_->atom(selectionNameOf(pasteboardName));
    const auto [position, isNew] = selections_.try_emplace(atom);
    X11Selection& selection = position->second;
    if (!isNew)
        return selection;
    selection.atom = atom;
    selection.waitingTimeLeft = timeOuts_.wholeContent;
    xcb_xfixes_select_selection_input(connection_->get(), connection_->window(), atom,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    const auto cookie = xcb_get_selection_owner(connection_->get(), atom);
    const auto reply = connection_->await(cookie, xcb_get_selection_owner_reply);
    selection.owner = reply != nullptr ? reply->owner : xcb_window_t{XCB_NONE};
    // An owner refuses requests with a time before its own. No event has told the current owner's time, so
    // the latest time has to be fetched.
    connection_->fetchTime();
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

std::vector<std::string> X11Selections::targets(X11Selection& selection) {
    if (!selection.targets) {
        const auto answer = ask(selection, connection_->atom("TARGETS"), largestTargetListBytes);
        if (!answer && deadline_ != nullptr && deadline_->isDeciding())
            return {}; // the key decision's deadline is too short for a conclusion
        // An owner that does not answer is not asked again.
        selection.targets = answer && answer->format == 32 ? targetNames(answer->bytes) : Targets();
    }
    return *selection.targets;
}

/// The names of a list of atoms, each once, without those that are too long for a type.
X11Selections::Targets X11Selections::targetNames(const Bytes& list) {
    std::vector<xcb_atom_t> atoms(list.size() / sizeof(xcb_atom_t));
    if (!atoms.empty())
        std::memcpy(atoms.data(), list.data(), atoms.size() * sizeof(xcb_atom_t));
    Targets targets;
    std::unordered_set<std::string> seen;
    for (std::string& name : connection_->atomNames(atoms)) {
        if (pasteboardType::isReadableName(name) && seen.insert(name).second)
            targets.push_back(std::move(name));
    }
    return targets;
}

std::optional<SelectionValue> X11Selections::read(X11Selection& selection, const std::string& target,
                                                  std::size_t limit) {
    auto answer = ask(selection, connection_->atom(target), limit);
    if (!answer)
        return std::nullopt;
    return SelectionValue{target, connection_->atomNames({&answer->type, 1}).front(), answer->format,
                          std::move(answer->bytes), answer->isCut};
}

std::optional<SelectionReader::Answer> X11Selections::ask(X11Selection& selection, xcb_atom_t target,
                                                          std::size_t limit) {
    if (selection.owner == XCB_NONE || connection_->isLost())
        return std::nullopt;
    const std::int64_t countBefore = selection.changeCount;
    const auto begin = Clock::now();
    // Only its time tells a refusal of this request from a late refusal.
    const xcb_timestamp_t time =
        reader_.awaitsLateAnswers() ? connection_->fetchTime() : connection_->latestTime();
    const auto latest = begin + selection.waitingTimeLeft;
    const auto end = deadline_ == nullptr ? latest : deadline_->limit(latest);
    auto answer = reader_.read({selection.atom, target, time, limit}, timeOuts_.ownerInactivity, end);
    if (selection.changeCount == countBefore)
        selection.waitingTimeLeft -= std::min(Clock::now() - begin, selection.waitingTimeLeft);
    return answer;
}

bool X11Selections::isServing() const {
    return !connection_->isLost() &&
           (server_.isServing() || std::ranges::any_of(selections_, [](const auto& entry) {
                return entry.second.owned != nullptr && !entry.second.owned->items.empty();
            }));
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
    reader_.readWithParameter({connection_->atom("CLIPBOARD_MANAGER"), connection_->atom("SAVE_TARGETS"),
                               connection_->latestTime(), largestTargetListBytes},
                              connection_->atoms(contentTargets(content->items)), timeOuts_.clipboardManager,
                              Clock::now() + timeOuts_.clipboardManager);
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
    selection.targets.reset();
    reader_.abandon(selection.atom);
    if (change.owner == XCB_NONE)
        return;
    ++selection.changeCount;
    selection.waitingTimeLeft = timeOuts_.wholeContent;
    if (change.owner == connection_->window() && change.selection_timestamp == selection.offeredAt) {
        selection.owned = std::exchange(selection.offered, nullptr);
        selection.ownedSince = selection.offeredAt;
        selection.offeredCount = selection.changeCount;
    }
}

} // namespace tavel
