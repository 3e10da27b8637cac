#pragma once

#include "Linux/X11/X11Reply.h"

#include <xcb/xcb.h>

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

/// Whether a request, by its number, was made before another. The numbers start again after 2^32.
inline bool isEarlierRequest(std::uint32_t one, std::uint32_t other) {
    return static_cast<std::int32_t>(one - other) < 0;
}

/// Whether a time of the server's is before another. Times are milliseconds that start again after 49 days:
/// what is less than half of that away counts as earlier (X protocol, Common Types, TIMESTAMP).
inline bool isEarlierTime(xcb_timestamp_t one, xcb_timestamp_t other) {
    return static_cast<std::int32_t>(one - other) < 0;
}

/// A connection to an X server, with a window of its own that is never shown. One thread.
///
/// When the server goes, every operation goes on giving nothing: `isLost` tells.
class X11Connection {
public:
    using Clock = std::chrono::steady_clock;

    /// Takes an event, or an error that came for no reply (response_type 0). Must not dispatch events.
    using EventHandler = std::function<void(const xcb_generic_event_t&)>;

    /// Connects to the server that `display` names, or DISPLAY if it is null. Nothing if none answers there,
    /// or one without the XFixes extension.
    static std::unique_ptr<X11Connection> open(const char* display);

    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    xcb_connection_t* get() const { return connection_; }
    xcb_window_t window() const { return window_; }
    bool isLost() const { return xcb_connection_has_error(connection_) != 0; }

    /// Ready to be read when events may have come.
    int descriptor() const { return xcb_get_file_descriptor(connection_); }

    /// The largest property that one request can set, and every program takes as a whole, in bytes.
    std::size_t largestPropertyBytes() const { return largestPropertyBytes_; }

    /// The number of the event XFixesSelectionNotify.
    std::uint8_t selectionOwnerEvent() const { return selectionOwnerEvent_; }

    /// The atom of that name, which comes into being if need be; 0 when the server is lost. The first time
    /// costs a round trip.
    xcb_atom_t atom(std::string_view name);

    /// The atoms of the names, or the names of the atoms: what is not known costs one round trip in all. A
    /// number that is no atom has the empty name.
    std::vector<xcb_atom_t> atoms(std::span<const std::string> names);
    std::vector<std::string> atomNames(std::span<const xcb_atom_t> atoms);

    void setEventHandler(EventHandler handler) { handler_ = std::move(handler); }

    /// Sends what waits for it, and hands what has come to the handler. Does not wait. A flood of events is
    /// left for the next call.
    void dispatchEvents();

    /// Hands everything to the handler that happened before now. One round trip.
    void synchronize();

    /// Whether an event has been read from the server that the handler has not got.
    bool hasQueuedEvent();

    /// Like `dispatchEvents`, but waits for at least one event until `deadline`. False if none came.
    bool waitForEvents(Clock::time_point deadline);

    /// Asks the server for its time, in milliseconds, and dispatches everything that happened before. 0 when
    /// it is lost.
    xcb_timestamp_t fetchTime();

    /// The latest time that the server has told. A timestamp for requests that need not be up to date.
    xcb_timestamp_t latestTime() const { return latestTime_; }
    void noteTime(xcb_timestamp_t time) { latestTime_ = time; }

private:
    X11Connection(xcb_connection_t* connection, const xcb_screen_t& screen, std::uint8_t selectionOwnerEvent);

    using Event = X11Reply<xcb_generic_event_t>;

    void dispatch(Event event);
    void remember(const std::string& name, xcb_atom_t atom);

    xcb_connection_t* connection_;
    xcb_window_t window_;
    std::size_t largestPropertyBytes_;
    std::uint8_t selectionOwnerEvent_;
    xcb_atom_t timeProperty_ = 0;
    xcb_timestamp_t latestTime_ = 0;
    bool timeCame_ = false;
    EventHandler handler_;
    Event queued_; // the next one for the handler, if it has been looked at
    std::unordered_map<std::string, xcb_atom_t> atoms_;
    std::unordered_map<xcb_atom_t, std::string> names_;
};

} // namespace tavel
