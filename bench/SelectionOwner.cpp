#include "bench/SelectionOwner.h"

#include <array>
#include <cstdint>
#include <stdexcept>

namespace tavel {

SelectionOwner::SelectionOwner() : connection_(xcb_connect(nullptr, nullptr)) {
    if (isLost()) {
        xcb_disconnect(connection_);
        throw std::runtime_error("There is no X server");
    }
    window_ = xcb_generate_id(connection_);
    const xcb_screen_t* const screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, screen->root, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    clipboard_ = atom("CLIPBOARD");
    incremental_ = atom("INCR");
}

SelectionOwner::~SelectionOwner() {
    xcb_disconnect(connection_);
}

std::chrono::steady_clock::time_point SelectionOwner::claim() {
    const auto now = std::chrono::steady_clock::now();
    xcb_set_selection_owner(connection_, window_, clipboard_, XCB_CURRENT_TIME);
    flush();
    return now;
}

X11Reply<xcb_generic_event_t> SelectionOwner::nextEvent() {
    return X11Reply<xcb_generic_event_t>(xcb_poll_for_event(connection_));
}

void SelectionOwner::flush() {
    xcb_flush(connection_);
}

void SelectionOwner::put(const Place& place, xcb_atom_t type, std::string_view bytes) {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, place.window, place.property, type, 8,
                        static_cast<std::uint32_t>(bytes.size()), bytes.data());
}

void SelectionOwner::notify(const xcb_selection_request_event_t& request) {
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
    event.notification.property = request.property;
    xcb_send_event(connection_, 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, event.bytes.data());
}

void SelectionOwner::answerTargets(const xcb_selection_request_event_t& request,
                                   std::span<const xcb_atom_t> targets) {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, request.requestor, request.property,
                        XCB_ATOM_ATOM, 32, static_cast<std::uint32_t>(targets.size()), targets.data());
    notify(request);
}

void SelectionOwner::announceIncrements(const xcb_selection_request_event_t& request) {
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection_, request.requestor, XCB_CW_EVENT_MASK, &events);
    const std::uint32_t leastSize = 1;
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, request.requestor, request.property, incremental_,
                        32, 1, &leastSize);
    notify(request);
}

xcb_atom_t SelectionOwner::atom(std::string_view name) {
    const auto cookie = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const auto reply = awaitReply(connection_, cookie, xcb_intern_atom_reply);
    return reply != nullptr ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

} // namespace tavel
