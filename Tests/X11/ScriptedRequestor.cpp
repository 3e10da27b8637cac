#include "Tests/X11/ScriptedRequestor.h"

#include "Linux/X11/X11Reply.h"

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <stdexcept>
#include <thread>

namespace tavel {

namespace {

/// Longer than any successful test takes.
constexpr std::chrono::seconds timeOut{20};

constexpr std::chrono::microseconds pollInterval{200};

} // namespace

std::vector<std::uint32_t> ScriptedRequestor::Property::numbers() const {
    std::vector<std::uint32_t> numbers(bytes.size() / sizeof(std::uint32_t));
    if (!numbers.empty())
        std::memcpy(numbers.data(), bytes.data(), numbers.size() * sizeof(std::uint32_t));
    return numbers;
}

ScriptedRequestor::ScriptedRequestor(const std::string& display)
    : connection_(xcb_connect(display.c_str(), nullptr)) {
    if (xcb_connection_has_error(connection_) != 0) {
        xcb_disconnect(connection_);
        throw std::runtime_error("There is no X server at " + display);
    }
    window_ = xcb_generate_id(connection_);
    const xcb_screen_t* const screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, screen->root, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
}

ScriptedRequestor::~ScriptedRequestor() {
    disconnect();
}

void ScriptedRequestor::ask(const std::string& target, const std::string& property, xcb_timestamp_t time) {
    xcb_convert_selection(connection_, window_, atom("CLIPBOARD"), atom(target), atom(property), time);
    xcb_flush(connection_);
}

void ScriptedRequestor::askWithoutProperty(const std::string& target) {
    xcb_convert_selection(connection_, window_, atom("CLIPBOARD"), atom(target), XCB_ATOM_NONE,
                          XCB_CURRENT_TIME);
    xcb_flush(connection_);
}

void ScriptedRequestor::askInNameOf(xcb_window_t window, const std::string& target,
                                    const std::string& property) {
    xcb_convert_selection(connection_, window, atom("CLIPBOARD"), atom(target), atom(property),
                          XCB_CURRENT_TIME);
    atom("ROUND_TRIP");
}

std::optional<ScriptedRequestor::Answer> ScriptedRequestor::awaitAnswer() {
    std::optional<Answer> answer;
    awaitEvent([&](const xcb_generic_event_t& event) {
        if ((event.response_type & 0x7F) != XCB_SELECTION_NOTIFY)
            return false;
        const auto& notification = reinterpret_cast<const xcb_selection_notify_event_t&>(event);
        answer = {notification.requestor, notification.selection, notification.target, notification.property,
                  notification.time};
        return true;
    });
    return answer;
}

bool ScriptedRequestor::convert(const std::string& target, const std::string& property,
                                xcb_timestamp_t time) {
    ask(target, property, time);
    const auto answer = awaitAnswer();
    return answer && answer->property != XCB_ATOM_NONE;
}

std::optional<ScriptedRequestor::Property> ScriptedRequestor::read(const std::string& target) {
    if (!convert(target))
        return std::nullopt;
    Property value = takeProperty();
    if (value.type == "INCR")
        return readIncrements();
    return value;
}

std::optional<ScriptedRequestor::Property> ScriptedRequestor::readIncrements(const std::string& property) {
    Property value;
    while (awaitProperty(property)) {
        const Property part = takeProperty(property);
        value.type = part.type;
        value.format = part.format;
        if (part.bytes.empty())
            return value;
        value.bytes += part.bytes;
    }
    return std::nullopt;
}

ScriptedRequestor::Property ScriptedRequestor::property(const std::string& name) {
    return get(name, false);
}

ScriptedRequestor::Property ScriptedRequestor::takeProperty(const std::string& name) {
    return get(name, true);
}

void ScriptedRequestor::deleteProperty(const std::string& name) {
    xcb_delete_property(connection_, window_, atom(name));
    atom("ROUND_TRIP");
}

void ScriptedRequestor::setAtoms(const std::string& name, const std::string& type,
                                 const std::vector<xcb_atom_t>& atoms) {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, atom(name), atom(type), 32,
                        static_cast<std::uint32_t>(atoms.size()), atoms.data());
    xcb_flush(connection_);
}

void ScriptedRequestor::setBytes(const std::string& name, const std::string& type, std::string_view bytes) {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, atom(name), atom(type), 8,
                        static_cast<std::uint32_t>(bytes.size()), bytes.data());
    xcb_flush(connection_);
}

bool ScriptedRequestor::awaitProperty(const std::string& name) {
    const xcb_atom_t number = atom(name);
    const auto end = std::chrono::steady_clock::now() + timeOut;
    while (std::chrono::steady_clock::now() < end) {
        const X11Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
            connection_, xcb_get_property(connection_, 0, window_, number, XCB_ATOM_ANY, 0, 0), nullptr));
        if (reply == nullptr)
            return false;
        if (reply->type != XCB_ATOM_NONE)
            return true;
        std::this_thread::sleep_for(pollInterval);
    }
    return false;
}

xcb_timestamp_t ScriptedRequestor::fetchTime() {
    const xcb_atom_t timeProperty = atom("TIME_OF_REQUESTOR");
    xcb_change_property(connection_, XCB_PROP_MODE_APPEND, window_, timeProperty, XCB_ATOM_INTEGER, 32, 0,
                        nullptr);
    xcb_timestamp_t time = 0;
    awaitEvent([&](const xcb_generic_event_t& event) {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if ((event.response_type & 0x7F) != XCB_PROPERTY_NOTIFY || change.atom != timeProperty)
            return false;
        time = change.time;
        return true;
    });
    return time;
}

void ScriptedRequestor::destroyWindow() {
    xcb_destroy_window(connection_, window_);
    atom("ROUND_TRIP");
}

void ScriptedRequestor::disconnect() {
    if (connection_ != nullptr)
        xcb_disconnect(connection_);
    connection_ = nullptr;
}

xcb_atom_t ScriptedRequestor::atom(const std::string& name) {
    const X11Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection_, xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    return reply != nullptr ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

std::string ScriptedRequestor::nameOf(xcb_atom_t atom) {
    if (atom == XCB_ATOM_NONE)
        return {};
    const X11Reply<xcb_get_atom_name_reply_t> reply(
        xcb_get_atom_name_reply(connection_, xcb_get_atom_name(connection_, atom), nullptr));
    if (reply == nullptr)
        return {};
    return {xcb_get_atom_name_name(reply.get()),
            static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

std::vector<std::string> ScriptedRequestor::namesOf(const std::vector<xcb_atom_t>& atoms) {
    std::vector<std::string> names;
    std::ranges::transform(atoms, std::back_inserter(names),
                           [this](xcb_atom_t atom) { return nameOf(atom); });
    return names;
}

xcb_window_t ScriptedRequestor::ownerOfClipboard() {
    const X11Reply<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
        connection_, xcb_get_selection_owner(connection_, atom("CLIPBOARD")), nullptr));
    return reply != nullptr ? reply->owner : xcb_window_t{XCB_NONE};
}

/// Waits for an event that `isWanted` accepts. Drops the events before it, and counts the errors.
template <typename IsWanted>
bool ScriptedRequestor::awaitEvent(const IsWanted& isWanted) {
    const auto end = std::chrono::steady_clock::now() + timeOut;
    xcb_flush(connection_);
    while (xcb_connection_has_error(connection_) == 0 && std::chrono::steady_clock::now() < end) {
        const X11Reply<xcb_generic_event_t> event(xcb_poll_for_event(connection_));
        if (event == nullptr) {
            pollfd readable{xcb_get_file_descriptor(connection_), POLLIN, 0};
            poll(&readable, 1, 1000);
            continue;
        }
        errors_ += event->response_type == 0 ? 1 : 0;
        if (isWanted(*event))
            return true;
    }
    return false;
}

ScriptedRequestor::Property ScriptedRequestor::get(const std::string& name, bool deletes) {
    constexpr std::uint32_t everything = 0x1FFFFFFF;
    const X11Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        connection_,
        xcb_get_property(connection_, deletes ? 1 : 0, window_, atom(name), XCB_ATOM_ANY, 0, everything),
        nullptr));
    if (reply == nullptr)
        return {};
    return {nameOf(reply->type), reply->format,
            std::string(static_cast<const char*>(xcb_get_property_value(reply.get())),
                        static_cast<std::size_t>(xcb_get_property_value_length(reply.get())))};
}

} // namespace tavel
