#include "Linux/X11/Selections/SelectionServer.h"

#include <algorithm>
#include <array>
#include <map>
#include <new>
#include <utility>

namespace tavel {

namespace {

/// Large enough to make the cost of a round trip negligible, small enough to copy twice.
constexpr std::size_t incrementBytes = std::size_t{1} << 20;

/// The most conversions in one MULTIPLE request.
constexpr std::uint32_t mostConversions = 256;

/// The most simultaneous transfers in increments to one client.
constexpr std::size_t mostTransfersOfAClient = 64;

/// The most memory that all transfers together hold. Those of one content mostly share its bytes, but each
/// may hold a text of its own, or a former content.
constexpr std::size_t mostBytesHeld = std::size_t{256} << 20;

} // namespace

std::vector<std::string> SelectionServer::atomNames() {
    return {"TARGETS", "TIMESTAMP", "MULTIPLE", "SAVE_TARGETS", "ATOM_PAIR", "INCR", "NULL"};
}

SelectionServer::SelectionServer(X11Connection& connection, Lookup lookup, Clock::duration requestorTimeOut)
    : connection_(connection), lookup_(std::move(lookup)), requestorTimeOut_(requestorTimeOut) {
    const std::vector<xcb_atom_t> atoms = connection_.atoms(atomNames());
    targets_ = atoms[0];
    timestamp_ = atoms[1];
    multiple_ = atoms[2];
    saveTargets_ = atoms[3];
    atomPair_ = atoms[4];
    incremental_ = atoms[5];
    null_ = atoms[6];
}

void SelectionServer::handleRequest(const xcb_selection_request_event_t& request) {
    // An obsolete requestor leaves the choice of the property to the owner (ICCCM 2.2).
    const xcb_atom_t property = request.property != XCB_ATOM_NONE ? request.property : request.target;
    const auto owned = lookup_(request.selection);
    // A requestor that names this process's own window would have that window's events turned off at the end.
    const bool isOurs = owned && request.requestor != connection_.window() &&
                        (request.time == XCB_CURRENT_TIME || !isEarlierTime(request.time, owned->since));
    const Conversion conversion{request.requestor, request.target, property};
    bool converted = false;
    try {
        if (isOurs && request.target == multiple_)
            converted = request.property != XCB_ATOM_NONE && convertMultiple(*owned, conversion);
        else if (isOurs)
            converted = convert(*owned, conversion);
    } catch (const std::bad_alloc&) {
        converted = false; // a refusal is the protocol's answer to any failure
    }
    notify(request, converted ? property : xcb_atom_t{XCB_ATOM_NONE});
    xcb_flush(connection_.get());
}

bool SelectionServer::convert(const OwnedSelection& owned, const Conversion& conversion) {
    if (conversion.target == targets_) {
        setAtoms(conversion, XCB_ATOM_ATOM, offeredAtoms(owned));
        return true;
    }
    if (conversion.target == timestamp_) {
        setAtoms(conversion, XCB_ATOM_INTEGER, {owned.since});
        return true;
    }
    if (conversion.target == saveTargets_) {
        setAtoms(conversion, null_, {}); // a target with a side effect has an empty value (ICCCM 2.6.3)
        return true;
    }
    const std::string target = connection_.atomNames({&conversion.target, 1}).front();
    const auto value = valueForTarget(owned.content->items, target);
    if (!value)
        return false;
    const auto form = owned.content->forms.find(target);
    return deliver(conversion, form != owned.content->forms.end() ? form->second : ValueForm{value->type},
                   value->bytes);
}

/// Converts a MULTIPLE request: a list of pairs of a target and a property. Replaces the property by None in
/// the pairs that fail (ICCCM 2.6.2).
bool SelectionServer::convertMultiple(const OwnedSelection& owned, const Conversion& conversion) {
    const auto cookie = xcb_get_property(connection_.get(), 0, conversion.requestor, conversion.property,
                                         XCB_GET_PROPERTY_TYPE_ANY, 0, 2 * mostConversions);
    const auto reply = connection_.await(cookie, xcb_get_property_reply);
    if (reply == nullptr || reply->format != 32 || reply->bytes_after > 0)
        return false;
    const auto* const first = static_cast<const xcb_atom_t*>(xcb_get_property_value(reply.get()));
    const std::size_t count = reply->value_len;
    std::vector<xcb_atom_t> pairs(first, first + count / 2 * 2);
    // The X server does not check that these numbers are atoms.
    const std::vector<std::string> names = connection_.atomNames(pairs);
    for (std::size_t i = 0; i < pairs.size(); i += 2) {
        const Conversion one{conversion.requestor, pairs[i], pairs[i + 1]};
        if (one.target == multiple_ || names[i].empty() || names[i + 1].empty() || !convert(owned, one))
            pairs[i + 1] = XCB_ATOM_NONE;
    }
    setAtoms(conversion, atomPair_, pairs);
    return true;
}

std::vector<xcb_atom_t> SelectionServer::offeredAtoms(const OwnedSelection& owned) {
    std::vector<xcb_atom_t> offered{targets_, timestamp_, multiple_, saveTargets_};
    const std::vector<xcb_atom_t> content = connection_.atoms(contentTargets(owned.content->items));
    offered.insert(offered.end(), content.begin(), content.end());
    return offered;
}

void SelectionServer::setAtoms(const Conversion& conversion, xcb_atom_t type,
                               const std::vector<xcb_atom_t>& atoms) {
    endTransfer(conversion);
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, conversion.requestor, conversion.property,
                        type, 32, static_cast<std::uint32_t>(atoms.size()), atoms.data());
}

/// Writes a value to the requestor's property, or starts a transfer in increments if one request cannot hold
/// it. False if its client has too many transfers.
bool SelectionServer::deliver(const Conversion& conversion, const ValueForm& form, const Bytes& bytes) {
    const xcb_atom_t type = connection_.atom(form.type);
    endTransfer(conversion);
    if (bytes.size() <= connection_.largestPropertyBytes()) {
        setProperty(conversion.requestor, conversion.property, type, form.format, bytes);
        return true;
    }
    if (!hasRoomFor(conversion.requestor))
        return false;
    makeRoomFor(bytes);
    // Before the announcement, so that the requestor's first deletion is not missed.
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_.get(), conversion.requestor, XCB_CW_EVENT_MASK, &events);
    setAtoms(conversion, incremental_, {static_cast<std::uint32_t>(bytes.size())});
    transfers_.push_back({conversion.requestor, conversion.property, type, form.format,
                          OutgoingTransfer(bytes, incrementBytes, Clock::now(), requestorTimeOut_)});
    return true;
}

/// Whether the requestor's client may have another transfer.
bool SelectionServer::hasRoomFor(xcb_window_t requestor) const {
    const std::uint32_t client = connection_.clientOf(requestor);
    const auto ofTheClient = std::ranges::count_if(transfers_, [&](const Transfer& transfer) {
        return connection_.clientOf(transfer.requestor) == client;
    });
    return static_cast<std::size_t>(ofTheClient) < mostTransfersOfAClient;
}

/// Gives up the oldest transfers, which hold former contents before the current one, until the bytes can be
/// held, too.
void SelectionServer::makeRoomFor(const Bytes& bytes) {
    while (!transfers_.empty() && bytesHeldWith(bytes) > mostBytesHeld) {
        const Transfer* const oldest = &transfers_.front();
        removeTransfers([oldest](const Transfer& transfer) { return &transfer == oldest; });
    }
}

/// What the transfers hold in memory, and these bytes. Shared memory counts once.
std::size_t SelectionServer::bytesHeldWith(const Bytes& bytes) const {
    std::map<const char*, std::size_t> sizes{{bytes.data(), bytes.size()}};
    for (const Transfer& transfer : transfers_)
        sizes.emplace(transfer.state.value().data(), transfer.state.value().size());
    std::size_t held = 0;
    for (const auto& [start, size] : sizes)
        held += size;
    return held;
}

/// A new request with the same property ends the earlier transfer to it.
void SelectionServer::endTransfer(const Conversion& conversion) {
    removeTransfers([&](const Transfer& transfer) {
        return transfer.requestor == conversion.requestor && transfer.property == conversion.property;
    });
}

void SelectionServer::setProperty(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type, int format,
                                  const Bytes& bytes) {
    const std::size_t unit = static_cast<std::size_t>(format) / 8;
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, requestor, property, type,
                        static_cast<std::uint8_t>(format), static_cast<std::uint32_t>(bytes.size() / unit),
                        bytes.data());
}

void SelectionServer::notify(const xcb_selection_request_event_t& request, xcb_atom_t property) {
    // SendEvent reads 32 bytes, more than this event has.
    union {
        xcb_selection_notify_event_t notification;
        std::array<char, 32> bytes;
    } event{};
    event.bytes = {};
    event.notification.response_type = XCB_SELECTION_NOTIFY;
    event.notification.time = request.time;
    event.notification.requestor = request.requestor;
    event.notification.selection = request.selection;
    event.notification.target = request.target;
    event.notification.property = property;
    xcb_send_event(connection_.get(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, event.bytes.data());
}

void SelectionServer::handlePropertyChange(const xcb_property_notify_event_t& change) {
    if (change.state != XCB_PROPERTY_DELETE)
        return;
    const auto transfer = std::ranges::find_if(transfers_, [&](const Transfer& one) {
        return one.requestor == change.window && one.property == change.atom;
    });
    if (transfer == transfers_.end())
        return;
    if (const auto increment = transfer->state.propertyDeleted(Clock::now())) {
        setProperty(transfer->requestor, transfer->property, transfer->type, transfer->format, *increment);
        xcb_flush(connection_.get());
    } else {
        removeTransfers([&](const Transfer& one) { return &one == &*transfer; });
    }
}

void SelectionServer::handleDestruction(xcb_window_t window) {
    // Without removeTransfers, because requests about a destroyed window fail.
    transfers_.remove_if([window](const Transfer& transfer) { return transfer.requestor == window; });
}

std::optional<SelectionServer::Clock::time_point> SelectionServer::nextDeadline() const {
    std::optional<Clock::time_point> earliest;
    for (const Transfer& transfer : transfers_)
        earliest = std::min(earliest.value_or(transfer.state.deadline()), transfer.state.deadline());
    return earliest;
}

void SelectionServer::giveUpOverdue(Clock::time_point now) {
    removeTransfers([now](const Transfer& transfer) { return transfer.state.deadline() <= now; });
}

/// Also deselects the events of windows without a remaining transfer.
void SelectionServer::removeTransfers(const std::function<bool(const Transfer&)>& condition) {
    std::vector<xcb_window_t> windows;
    transfers_.remove_if([&](const Transfer& transfer) {
        const bool removed = condition(transfer);
        if (removed)
            windows.push_back(transfer.requestor);
        return removed;
    });
    for (const xcb_window_t window : windows) {
        if (std::ranges::find(transfers_, window, &Transfer::requestor) != transfers_.end())
            continue;
        const std::uint32_t noEvents = XCB_EVENT_MASK_NO_EVENT;
        xcb_change_window_attributes(connection_.get(), window, XCB_CW_EVENT_MASK, &noEvents);
    }
    if (!windows.empty())
        xcb_flush(connection_.get());
}

} // namespace tavel
