#pragma once

#include "Linux/X11/X11Reply.h"

#include <xcb/xcb.h>

#include <chrono>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace tavel {

/// A program's connection to the X server, on which it owns CLIPBOARD. It answers nothing by itself and waits
/// for no other program. Without the server, the operations do nothing. One thread.
class SelectionOwner {
public:
    /// A property of another program, which gets a value.
    struct Place {
        xcb_window_t window;
        xcb_atom_t property;

        auto operator<=>(const Place&) const = default;
    };

    static Place placeOf(const xcb_selection_request_event_t& request) {
        return {request.requestor, request.property};
    }

    /// Connects to the server that DISPLAY names. Throws std::runtime_error if there is none.
    SelectionOwner();
    ~SelectionOwner();
    SelectionOwner(const SelectionOwner&) = delete;
    SelectionOwner& operator=(const SelectionOwner&) = delete;

    /// Takes the selection. Returns the time just before the request was sent.
    std::chrono::steady_clock::time_point claim();

    /// The next event that has come; null without one. Waits for nothing.
    X11Reply<xcb_generic_event_t> nextEvent();

    /// Sends what is queued.
    void flush();

    /// Readable when there may be events.
    int descriptor() const { return xcb_get_file_descriptor(connection_); }

    bool isLost() const { return xcb_connection_has_error(connection_) != 0; }

    void put(const Place& place, xcb_atom_t type, std::string_view bytes);

    /// Tells the requestor that the value is in its property.
    void notify(const xcb_selection_request_event_t& request);

    void answerTargets(const xcb_selection_request_event_t& request, std::span<const xcb_atom_t> targets);

    /// Answers that the value comes in increments. From then on the requestor's deletions come as events.
    void announceIncrements(const xcb_selection_request_event_t& request);

    xcb_atom_t atom(std::string_view name);

private:
    xcb_connection_t* connection_;
    xcb_window_t window_;
    xcb_atom_t clipboard_;
    xcb_atom_t incremental_;
};

} // namespace tavel
