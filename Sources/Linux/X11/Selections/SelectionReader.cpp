#include "Linux/X11/Selections/SelectionReader.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <utility>

namespace tavel {

namespace {

/// Each transfer has a property of its own, which tells a late answer from the awaited one. So many are in
/// use at once only if one owner after the other hangs.
constexpr int propertyCount = 16;

/// The bytes of one GetProperty: larger than most increments, and the only copy beside the value itself.
constexpr std::size_t partBytes = std::size_t{4} << 20;

constexpr std::size_t unitBytes = 4; // the unit of GetProperty's offsets and lengths

/// What to read of a property that holds more: no more than is kept.
std::size_t nextPartBytes(const IncomingTransfer& transfer) {
    const std::size_t keptUnits = (transfer.room() + unitBytes - 1) / unitBytes;
    return std::min(partBytes, keptUnits * unitBytes);
}

} // namespace

/// Those of the properties, and INCR as the last one.
std::vector<std::string> SelectionReader::atomNames() {
    std::vector<std::string> names;
    names.reserve(propertyCount + 1);
    for (int number = 0; number < propertyCount; ++number)
        names.push_back("TAVEL_SELECTION_" + std::to_string(number));
    names.emplace_back("INCR");
    return names;
}

SelectionReader::SelectionReader(X11Connection& connection, const TransferTimeOuts& timeOuts)
    : connection_(connection), timeOuts_(timeOuts), properties_(connection.atoms(atomNames())),
      incrementalType_(properties_.back()) {
    properties_.pop_back();
}

SelectionReader::Ticket SelectionReader::ask(const Request& request) {
    const Transfer& transfer = begin(request);
    xcb_delete_property(connection_.get(), connection_.window(), transfer.property);
    return convert(transfer);
}

SelectionReader::Ticket SelectionReader::askWithParameter(const Request& request,
                                                          const std::vector<xcb_atom_t>& parameter) {
    const Transfer& transfer = begin(request);
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, connection_.window(), transfer.property,
                        XCB_ATOM_ATOM, 32, static_cast<std::uint32_t>(parameter.size()), parameter.data());
    return convert(transfer);
}

SelectionReader::Ticket SelectionReader::convert(const Transfer& transfer) {
    const Request& request = transfer.request;
    xcb_convert_selection(connection_.get(), connection_.window(), request.selection, request.target,
                          transfer.property, request.time);
    return transfer.ticket;
}

SelectionReader::Transfer& SelectionReader::begin(const Request& request) {
    transfers_.remove_if(
        [](const Transfer& transfer) { return transfer.state.isOver() && !transfer.isAwaited; });
    transfers_.push_back({++lastTicket_, request, freeProperty(),
                          IncomingTransfer(request.limit, incrementalType_),
                          OwnerDeadline(timeOuts_, Clock::now())});
    return transfers_.back();
}

bool SelectionReader::isDecided(const Transfer& transfer) {
    return transfer.state.isOver() || transfer.state.letsThrough();
}

bool SelectionReader::isDecided(Ticket ticket) const {
    const auto transfer = find(ticket);
    return transfer == transfers_.end() || isDecided(*transfer);
}

bool SelectionReader::hasTimedOut(Ticket ticket) const {
    const auto transfer = find(ticket);
    return transfer != transfers_.end() && transfer->hasTimedOut;
}

/// The end of the list if the request was forgotten, because too many others had to be kept.
std::list<SelectionReader::Transfer>::const_iterator SelectionReader::find(Ticket ticket) const {
    return std::ranges::find(transfers_, ticket, &Transfer::ticket);
}

std::optional<SelectionReader::Answer> SelectionReader::take(Ticket ticket) {
    const auto transfer = std::ranges::find(transfers_, ticket, &Transfer::ticket);
    if (transfer == transfers_.end())
        return std::nullopt;
    transfer->isAwaited = false;
    IncomingTransfer& state = transfer->state;
    std::optional<Answer> answer;
    if (state.hasValue()) {
        const bool isCut = state.isCut();
        answer = {state.type(), state.format(), state.takeValue(), isCut};
    } else {
        state.abandon();
    }
    // Otherwise the transfer stays in the list until the owner has finished.
    if (state.isOver())
        transfers_.erase(transfer);
    return answer;
}

/// The least recently used free property, so that an owner's late changes are over before it is used again.
/// If all are in use, the property of the oldest transfer, which is then forgotten.
xcb_atom_t SelectionReader::freeProperty() {
    auto free = std::ranges::find_if(properties_, [this](xcb_atom_t property) { return !isInUse(property); });
    if (free == properties_.end()) {
        free = std::ranges::find(properties_, transfers_.front().property);
        transfers_.pop_front();
    }
    const xcb_atom_t property = *free;
    std::rotate(free, std::next(free), properties_.end());
    return property;
}

bool SelectionReader::isInUse(xcb_atom_t property) const {
    return std::ranges::any_of(transfers_, [property](const Transfer& transfer) {
        return transfer.property == property && !transfer.state.isOver();
    });
}

void SelectionReader::abandon(xcb_atom_t selection) {
    for (Transfer& transfer : transfers_) {
        if (transfer.request.selection == selection)
            transfer.state.abandon();
    }
}

std::optional<SelectionReader::Clock::time_point> SelectionReader::nextDeadline() const {
    std::optional<Clock::time_point> next;
    for (const Transfer& transfer : transfers_) {
        if (transfer.isAwaited && !isDecided(transfer))
            next = std::min(next.value_or(Clock::time_point::max()), transfer.deadline.end());
    }
    return next;
}

void SelectionReader::giveUpOverdue(Clock::time_point now) {
    for (Transfer& transfer : transfers_) {
        if (!transfer.isAwaited || isDecided(transfer) || now < transfer.deadline.end())
            continue;
        transfer.hasTimedOut = true;
        transfer.state.abandon();
    }
}

bool SelectionReader::awaitsLateAnswers() const {
    return std::ranges::any_of(transfers_, [](const Transfer& transfer) { return !transfer.isAnswered; });
}

/// Whether a refusal with that time can answer the request. Its time should equal the request's. Some owners
/// send another one, but an earlier time belongs to an earlier request.
bool SelectionReader::canRefuse(const Transfer& transfer, xcb_timestamp_t time) {
    return time == XCB_CURRENT_TIME || !isEarlierTime(time, transfer.request.time);
}

/// The transfer that the answer belongs to, or the end of the list. A refusal names no property. If its time
/// does not identify the request either, it counts for the latest one, which is the awaited one.
SelectionReader::Position SelectionReader::transferFor(const xcb_selection_notify_event_t& answer) {
    auto found = transfers_.end();
    bool isExact = false;
    for (auto transfer = transfers_.begin(); transfer != transfers_.end(); ++transfer) {
        const bool isAsked = !transfer->isAnswered && transfer->request.selection == answer.selection &&
                             transfer->request.target == answer.target &&
                             (answer.property == XCB_ATOM_NONE ? canRefuse(*transfer, answer.time)
                                                               : answer.property == transfer->property);
        const bool hasItsTime = transfer->request.time == answer.time;
        if (isAsked && (hasItsTime || !isExact)) {
            found = transfer;
            isExact = hasItsTime;
        }
    }
    return found;
}

void SelectionReader::handleAnswer(const xcb_selection_notify_event_t& answer) {
    const auto transfer = transferFor(answer);
    if (transfer == transfers_.end()) {
        // A late answer: the owner may wait until its property is deleted. One in use may hold another value.
        if (std::ranges::find(properties_, answer.property) != properties_.end() && !isInUse(answer.property))
            xcb_delete_property(connection_.get(), connection_.window(), answer.property);
        return;
    }
    transfer->isAnswered = true;
    if (answer.property == XCB_ATOM_NONE)
        transfer->state.refused();
    else
        beginReading(*transfer);
}

void SelectionReader::handlePropertyChange(const xcb_property_notify_event_t& change,
                                           std::uint32_t requestNumber) {
    if (change.window != connection_.window() || change.state != XCB_PROPERTY_NEW_VALUE)
        return;
    const auto transfer = std::ranges::find(transfers_, change.atom, &Transfer::property);
    if (transfer == transfers_.end() || !transfer->state.expectsIncrement() || transfer->unread)
        return;
    // The last read has already seen a change from before it. So an owner that changes the property again and
    // again causes one read for all its changes.
    if (isEarlierRequest(requestNumber, transfer->lastReading))
        return;
    beginReading(*transfer);
}

void SelectionReader::beginReading(Transfer& transfer) {
    transfer.unread = 0;
    readPart(transfer);
}

bool SelectionReader::hasOpenTransfers() const {
    return std::ranges::any_of(transfers_, [](const Transfer& transfer) { return !transfer.state.isOver(); });
}

bool SelectionReader::hasUnread() const {
    return std::ranges::any_of(transfers_,
                               [](const Transfer& transfer) { return transfer.unread.has_value(); });
}

void SelectionReader::readOn() {
    for (Transfer& transfer : transfers_) {
        if (transfer.unread)
            readPart(transfer);
    }
}

/// Reads a part of the property, as far as the value is kept. A value may be as large as its owner likes, and
/// others want their turn after each part. The server deletes the property with its last part.
void SelectionReader::readPart(Transfer& transfer) {
    const std::size_t offset = *std::exchange(transfer.unread, std::nullopt);
    if (transfer.state.letsThrough()) {
        letThrough(transfer);
        return;
    }
    const PropertyPart part = fetchPart(transfer, offset, nextPartBytes(transfer.state));
    try {
        transfer.state.received(part);
    } catch (const std::bad_alloc&) {
        transfer.state.abandon();
    }
    transfer.deadline.received(part.bytes.size(), Clock::now());
    if (part.remaining != 0)
        transfer.unread = offset + part.bytes.size();
}

/// Deletes the property, of which only type and format are read.
void SelectionReader::letThrough(Transfer& transfer) {
    const PropertyPart unread = fetchPart(transfer, 0, 0);
    transfer.lastReading =
        xcb_delete_property(connection_.get(), connection_.window(), transfer.property).sequence;
    transfer.state.received(unread);
}

PropertyPart SelectionReader::fetchPart(Transfer& transfer, std::size_t offset, std::size_t length) {
    const auto cookie = xcb_get_property(
        connection_.get(), 1, connection_.window(), transfer.property, XCB_GET_PROPERTY_TYPE_ANY,
        static_cast<std::uint32_t>(offset / unitBytes), static_cast<std::uint32_t>(length / unitBytes));
    transfer.lastReading = cookie.sequence;
    const std::shared_ptr<xcb_get_property_reply_t> reply = connection_.await(cookie, xcb_get_property_reply);
    if (reply == nullptr)
        return {};
    const auto size = static_cast<std::size_t>(xcb_get_property_value_length(reply.get()));
    return {reply->type, reply->format,
            Bytes(reply, static_cast<const char*>(xcb_get_property_value(reply.get())), size),
            reply->bytes_after};
}

} // namespace tavel
