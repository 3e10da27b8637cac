#pragma once

#include "Linux/X11/X11Reply.h"

#include <xcb/xcb.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <list>

namespace tavel {

/// The bit of an event's response_type that SendEvent sets.
inline constexpr int sentByProgram = 0x80;

/// Whether the first sequence number is that of an earlier request. The numbers wrap around at 2^32.
inline bool isEarlierRequest(std::uint32_t one, std::uint32_t other) {
    return static_cast<std::int32_t>(one - other) < 0;
}

/// The events of an X connection that wait to be handled. They keep their order, but the clients whose
/// requests for selections wait take turns, so that none starves another. However many events come, a limited
/// number waits. One thread.
class EventQueue {
public:
    using Event = X11Reply<xcb_generic_event_t>;

    /// The most requests of one client that wait: more than any program makes at once.
    static constexpr std::size_t mostRequestsOfAClient = 256;

    /// The most other events that wait.
    static constexpr std::size_t mostEvents = 1'024;

    /// The most requests that are handled before an event that came after them, when many wait.
    static constexpr int mostRequestsAhead = 32;

    /// `resourceMask` is the connection's resource_id_mask: the other bits of a window's number tell which
    /// client made it (X protocol, 8, Connection Setup).
    explicit EventQueue(std::uint32_t resourceMask) : resourceMask_(resourceMask) {}

    /// Takes the event in. Gives it back if there are too many already: of its client, if it is a request.
    /// The requests of a client that goes on and on are dropped: the server takes longer for an answer than
    /// for a request, so whoever waits for the server would wait for all the answers.
    Event push(Event event);

    /// A number that all windows of one client share.
    std::uint32_t clientOf(xcb_window_t window) const { return window & ~resourceMask_; }

    bool isEmpty() const { return events_.empty() && clients_.empty(); }

    /// Whether an event waits, requests for selections not counted, that came before the reply to a request.
    bool hasEventBefore(std::uint32_t requestNumber) const;

    /// The next event to handle. There has to be one.
    Event next();

private:
    struct Entry {
        std::uint64_t number; // counts the events
        Event event;
    };

    struct Client {
        std::uint32_t number;
        std::deque<Entry> requests; // at least one
        std::size_t givenBack = 0;
    };

    Event pushRequest(Event event);
    std::uint32_t senderOf(const xcb_selection_request_event_t& request) const;
    bool isRequestsTurn() const;
    Event nextRequest();

    std::uint32_t resourceMask_;
    std::uint64_t received_ = 0;
    int requestsAhead_ = 0; // handled since the last other event, while one waits
    std::deque<Entry> events_;
    std::list<Client> clients_; // the one whose turn it is first
};

} // namespace tavel
