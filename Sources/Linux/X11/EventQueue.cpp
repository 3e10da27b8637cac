#include "Linux/X11/EventQueue.h"

#include <algorithm>
#include <utility>

namespace tavel {

namespace {

bool isRequest(const xcb_generic_event_t& event) {
    return (event.response_type & ~sentByProgram) == XCB_SELECTION_REQUEST;
}

/// Any program may send such a request in the name of another, so all of them together count as one client,
/// of a number that no window's client has.
constexpr std::uint32_t unknownClient = 0;

} // namespace

EventQueue::Event EventQueue::push(Event event) {
    if (isRequest(*event))
        return pushRequest(std::move(event));
    if (events_.size() >= mostEvents)
        return event;
    events_.push_back({++received_, std::move(event)});
    return nullptr;
}

EventQueue::Event EventQueue::pushRequest(Event event) {
    const std::uint32_t number = senderOf(reinterpret_cast<const xcb_selection_request_event_t&>(*event));
    const auto client = std::ranges::find(clients_, number, &Client::number);
    if (client == clients_.end()) {
        std::list<Client> added{}; // whole before it is in the list, as memory may lack
        added.push_back({number, {}});
        added.back().requests.push_back({++received_, std::move(event)});
        clients_.splice(clients_.end(), added);
        return nullptr;
    }
    if (client->requests.size() >= mostRequestsOfAClient)
        return client->givenBack++ < mostRequestsOfAClient ? std::move(event) : nullptr;
    client->requests.push_back({++received_, std::move(event)});
    return nullptr;
}

std::uint32_t EventQueue::senderOf(const xcb_selection_request_event_t& request) const {
    return (request.response_type & sentByProgram) != 0 ? unknownClient : clientOf(request.requestor);
}

bool EventQueue::hasEventBefore(std::uint32_t requestNumber) const {
    return !events_.empty() && isEarlierRequest(events_.front().event->full_sequence, requestNumber);
}

EventQueue::Event EventQueue::next() {
    if (isRequestsTurn())
        return nextRequest();
    requestsAhead_ = 0;
    Event event = std::move(events_.front().event);
    events_.pop_front();
    return event;
}

bool EventQueue::isRequestsTurn() const {
    if (events_.empty() || clients_.empty())
        return events_.empty();
    return requestsAhead_ < mostRequestsAhead &&
           clients_.front().requests.front().number < events_.front().number;
}

EventQueue::Event EventQueue::nextRequest() {
    requestsAhead_ = events_.empty() ? 0 : requestsAhead_ + 1;
    std::deque<Entry>& requests = clients_.front().requests;
    Event event = std::move(requests.front().event);
    requests.pop_front();
    if (requests.empty())
        clients_.pop_front();
    else
        clients_.splice(clients_.end(), clients_, clients_.begin()); // the next client's turn
    return event;
}

} // namespace tavel
