#pragma once

#include "Linux/X11/EventQueue.h"
#include "Linux/X11/X11Reply.h"

#include <xcb/xcb.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tavel {

/// Whether the first server time is earlier. Times are milliseconds that wrap around after 49 days, so a time
/// up to half of that before another is the earlier one (X protocol, Common Types, TIMESTAMP).
inline bool isEarlierTime(xcb_timestamp_t one, xcb_timestamp_t other) {
    return static_cast<std::int32_t>(one - other) < 0;
}

/// A connection to an X server, with a window that is never mapped. One thread.
///
/// When the server is lost, `isLost` becomes true and every operation returns an empty result at once.
class X11Connection {
public:
    using Clock = std::chrono::steady_clock;

    /// Receives an event, or the error of a request without a reply (response_type 0). Must not dispatch
    /// events.
    using EventHandler = std::function<void(const xcb_generic_event_t&)>;

    /// Connects to the server that `display` names, or to that of DISPLAY if it is null. Returns null if no
    /// server answers or it has no XFixes extension; `refusal`, if that is not null, is a clause for people
    /// that says which then. The atoms of `names` are known after this call: asked for one by one, they would
    /// cost the start a round trip each.
    static std::unique_ptr<X11Connection> open(const char* display, std::vector<std::string> names = {},
                                               std::string* refusal = nullptr);

    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    xcb_connection_t* get() const { return connection_; }
    xcb_window_t window() const { return window_; }
    /// From now on, a wait for the server that lasts longer than a second ends with its loss: the process is
    /// about to end. Any thread.
    void expectEnd() { isEndExpected_ = true; }

    bool isLost() const { return xcb_connection_has_error(connection_) != 0; }

    /// A number that all windows of one client share.
    std::uint32_t clientOf(xcb_window_t window) const { return queue_.clientOf(window); }

    /// Becomes readable when the server has sent something.
    int descriptor() const { return xcb_get_file_descriptor(connection_); }

    /// The largest property, in bytes, that one request can set and all known requestors read in full.
    std::size_t largestPropertyBytes() const;

    /// The response_type of XFixesSelectionNotify.
    std::uint8_t selectionOwnerEvent() const { return selectionOwnerEvent_; }

    /// The atom of that name, which the server creates if necessary; 0 when the server is lost. One round
    /// trip for a new name.
    xcb_atom_t atom(std::string_view name);

    /// The atoms of the names, or the names of the atoms. One round trip for all new ones together, but for
    /// names of atoms one for each 32 of them. A number that is no atom has the empty name, and so has an
    /// atom whose name is too long for a type.
    std::vector<xcb_atom_t> atoms(std::span<const std::string> names);
    std::vector<std::string> atomNames(std::span<const xcb_atom_t> atoms);

    void setEventHandler(EventHandler handler) { handler_ = std::move(handler); }

    /// Receives the events that find no room in the queue (EventQueue), as they arrive. Must not wait for
    /// replies.
    void setExcessHandler(EventHandler handler) { excessHandler_ = std::move(handler); }

    /// Waits for the reply to a request; null if the request failed or the server is lost. The xcb function
    /// for that reply only tells its kind: while xcb itself waits, it keeps every event that comes before the
    /// reply, which another program can make hundreds of megabytes.
    template <typename Reply, typename Cookie>
    X11Reply<Reply> await(Cookie cookie, Reply* (*)(xcb_connection_t*, Cookie, xcb_generic_error_t**)) {
        return X11Reply<Reply>(static_cast<Reply*>(waitForReply(cookie.sequence)));
    }

    /// Waits like `await`. For a module, which is not linked with this class.
    ReplyWaiter replyWaiter() {
        return [this](std::uint32_t requestNumber) { return waitForReply(requestNumber); };
    }

    /// Flushes the requests and passes the events that have arrived to the handler. Does not wait. Returns
    /// after some milliseconds, though more may have arrived.
    void dispatchEvents();

    /// Passes all events from before now to the handler. One round trip.
    void synchronize();

    /// Whether an event has been read from the server and not passed to the handler.
    bool hasQueuedEvent();

    /// Like `dispatchEvents`, but waits for at least one event until `deadline`. False if none came.
    bool waitForEvents(Clock::time_point deadline);

    /// Asks the server for its time, in milliseconds, and dispatches all earlier events. XCB_CURRENT_TIME (0)
    /// when the server is lost or does not answer in time.
    xcb_timestamp_t fetchTime();

    /// The two halves of `fetchTime`: other requests between them cost no round trip of their own.
    void requestTime();
    xcb_timestamp_t awaitTime();

    /// The server time of the latest event, for requests that need no exact time.
    xcb_timestamp_t latestTime() const { return latestTime_; }
    void noteTime(xcb_timestamp_t time) { latestTime_ = time; }

private:
    X11Connection(xcb_connection_t* connection, const xcb_screen_t& screen, std::vector<std::string> names);

    using Event = EventQueue::Event;

    bool useExtensions();
    void* waitForReply(std::uint32_t requestNumber);
    bool takeIn();
    void takeInQueued();
    void takeIn(Event event);
    void dispatch(Event event);
    void appendNames(std::vector<std::string>& names, std::span<const xcb_atom_t> atoms);
    void remember(const std::string& name, xcb_atom_t atom);

    xcb_connection_t* connection_;
    xcb_window_t window_;
    std::uint8_t selectionOwnerEvent_ = 0;
    xcb_atom_t timeProperty_ = 0;
    xcb_timestamp_t latestTime_ = 0;
    bool timeCame_ = false;
    std::atomic<bool> isEndExpected_ = false;
    EventHandler handler_;
    EventHandler excessHandler_;
    EventQueue queue_;
    std::unordered_map<std::string, xcb_atom_t> atoms_;
    std::unordered_map<xcb_atom_t, std::string> names_;
};

} // namespace tavel
