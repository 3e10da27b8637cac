#include "Tests/X11/ScriptedOwner.h"

#include "Linux/X11/X11Reply.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <stdexcept>

namespace tavel {

namespace {

/// Longer than any successful test takes.
constexpr std::chrono::seconds timeOut{60};

constexpr std::chrono::microseconds pollInterval{200};

} // namespace

ScriptedOwner::ScriptedOwner(const std::string& display)
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
    clipboard_ = atom("CLIPBOARD");
    timeProperty_ = atom("TIME_OF_OWNER");
    thread_ = std::thread([this] { serve(); });
}

ScriptedOwner::~ScriptedOwner() {
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    changed_.notify_all();
    disconnect();
    thread_.join();
    xcb_disconnect(connection_);
}

void ScriptedOwner::on(const std::string& target, Script script) {
    const std::lock_guard lock(mutex_);
    scripts_[target] = std::move(script);
}

void ScriptedOwner::offer(const std::vector<std::string>& targets) {
    std::vector<xcb_atom_t> numbers{atom("TARGETS"), atom("TIMESTAMP"), atom("MULTIPLE")};
    for (const std::string& target : targets)
        numbers.push_back(atom(target));
    on("TARGETS", atoms("ATOM", std::move(numbers)));
}

void ScriptedOwner::offerValue(const std::string& target, std::string bytes) {
    offer({target});
    on(target, value(target, std::move(bytes)));
}

void ScriptedOwner::take() {
    const xcb_timestamp_t now = fetchTime();
    xcb_set_selection_owner(connection_, window_, clipboard_, now);
    const X11Reply<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
        connection_, xcb_get_selection_owner(connection_, clipboard_), nullptr));
    if (reply == nullptr || reply->owner != window_)
        throw std::runtime_error("The selection cannot be taken.");
    const std::lock_guard lock(mutex_);
    ownedSince_ = now;
}

void ScriptedOwner::release() {
    xcb_set_selection_owner(connection_, XCB_NONE, clipboard_, XCB_CURRENT_TIME);
    atom("ROUND_TRIP_OF_RELEASE");
}

xcb_timestamp_t ScriptedOwner::ownedSince() {
    const std::lock_guard lock(mutex_);
    return ownedSince_;
}

void ScriptedOwner::destroyWindow() {
    xcb_destroy_window(connection_, window_);
    atom("ROUND_TRIP_OF_DESTRUCTION");
}

void ScriptedOwner::disconnect() {
    xcb_flush(connection_);
    shutdown(xcb_get_file_descriptor(connection_), SHUT_RDWR);
}

ScriptedOwner::Script ScriptedOwner::silence() const {
    return [](const Request&) {};
}

ScriptedOwner::Script ScriptedOwner::value(const std::string& type, std::string bytes, int format) {
    return [this, type, bytes = std::move(bytes), format](const Request& request) {
        put(request, type, bytes, format);
        notify(request);
    };
}

ScriptedOwner::Script ScriptedOwner::atoms(const std::string& type, std::vector<xcb_atom_t> atoms) {
    return value(type,
                 std::string(reinterpret_cast<const char*>(atoms.data()), atoms.size() * sizeof(xcb_atom_t)),
                 32);
}

ScriptedOwner::Script ScriptedOwner::increments(const std::string& type, std::vector<std::string> parts) {
    return [this, type, parts = std::move(parts)](const Request& request) {
        announce(request, 1);
        sendIncrements(request, type, parts);
    };
}

void ScriptedOwner::put(const Request& request, const std::string& type, std::string_view bytes, int format) {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, request.requestor, request.property, atom(type),
                        static_cast<std::uint8_t>(format),
                        static_cast<std::uint32_t>(bytes.size() * 8 / static_cast<std::size_t>(format)),
                        bytes.data());
    xcb_flush(connection_);
}

void ScriptedOwner::notify(const Request& request) {
    sendNotification(request, request.property, request.time);
}

void ScriptedOwner::refuse(const Request& request, std::optional<xcb_timestamp_t> time) {
    sendNotification(request, XCB_ATOM_NONE, time.value_or(request.time));
}

void ScriptedOwner::announce(const Request& request, std::uint32_t hint) {
    put(request, "INCR", {reinterpret_cast<const char*>(&hint), sizeof hint}, 32);
    notify(request);
}

bool ScriptedOwner::sendIncrements(const Request& request, const std::string& type,
                                   const std::vector<std::string>& parts) {
    for (const std::string& part : parts) {
        if (!awaitDeletion(request))
            return false;
        put(request, type, part);
    }
    if (!awaitDeletion(request))
        return false;
    put(request, type, {});
    return awaitDeletion(request);
}

bool ScriptedOwner::awaitDeletion(const Request& request) {
    const auto end = std::chrono::steady_clock::now() + timeOut;
    while (!isEnding() && std::chrono::steady_clock::now() < end) {
        xcb_generic_error_t* error = nullptr;
        const X11Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
            connection_,
            xcb_get_property(connection_, 0, request.requestor, request.property, XCB_ATOM_ANY, 0, 0),
            &error));
        std::free(error);
        if (reply == nullptr)
            return false;
        if (reply->type == XCB_ATOM_NONE)
            return true;
        std::this_thread::sleep_for(pollInterval);
    }
    return false;
}

bool ScriptedOwner::hasProperty(const Request& request) {
    const X11Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        connection_,
        xcb_get_property(connection_, 0, request.requestor, request.property, XCB_ATOM_ANY, 0, 0), nullptr));
    return reply != nullptr && reply->type != XCB_ATOM_NONE;
}

std::vector<ScriptedOwner::Request> ScriptedOwner::requests() {
    const std::lock_guard lock(mutex_);
    return requests_;
}

std::size_t ScriptedOwner::countOf(const std::string& target) {
    const std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(std::ranges::count(requests_, target, &Request::targetName));
}

ScriptedOwner::Request ScriptedOwner::awaitRequest(const std::string& target, std::size_t number) {
    std::optional<Request> found;
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, timeOut, [&] {
        std::size_t count = 0;
        for (const Request& request : requests_) {
            if (request.targetName == target && ++count == number)
                found = request;
        }
        return found.has_value();
    });
    if (!found)
        throw std::runtime_error("Nobody asks for " + target);
    return *found;
}

xcb_atom_t ScriptedOwner::atom(const std::string& name) {
    const X11Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection_, xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    return reply != nullptr ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

std::string ScriptedOwner::nameOf(xcb_atom_t atom) {
    const X11Reply<xcb_get_atom_name_reply_t> reply(
        xcb_get_atom_name_reply(connection_, xcb_get_atom_name(connection_, atom), nullptr));
    if (reply == nullptr)
        return {};
    return {xcb_get_atom_name_name(reply.get()),
            static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

bool ScriptedOwner::isEnding() {
    const std::lock_guard lock(mutex_);
    return isEnding_;
}

void ScriptedOwner::serve() {
    while (const X11Reply<xcb_generic_event_t> event{xcb_wait_for_event(connection_)}) {
        const int kind = event->response_type & 0x7F;
        if (kind == XCB_SELECTION_REQUEST) {
            handleRequest(reinterpret_cast<const xcb_selection_request_event_t&>(*event));
        } else if (kind == XCB_PROPERTY_NOTIFY) {
            const std::lock_guard lock(mutex_);
            time_ = reinterpret_cast<const xcb_property_notify_event_t&>(*event).time;
            changed_.notify_all();
        }
    }
}

void ScriptedOwner::handleRequest(const xcb_selection_request_event_t& event) {
    const Request request{event.requestor, event.selection, event.target,
                          event.property,  event.time,      nameOf(event.target)};
    Script script = [this](const Request& one) { refuse(one); };
    {
        const std::lock_guard lock(mutex_);
        requests_.push_back(request);
        const auto found = scripts_.find(request.targetName);
        if (found != scripts_.end())
            script = found->second;
        changed_.notify_all();
    }
    script(request);
}

void ScriptedOwner::sendNotification(const Request& request, xcb_atom_t property, xcb_timestamp_t time) {
    union {
        xcb_selection_notify_event_t notification;
        std::array<char, 32> bytes;
    } event{};
    event.bytes = {};
    event.notification.response_type = XCB_SELECTION_NOTIFY;
    event.notification.time = time;
    event.notification.requestor = request.requestor;
    event.notification.selection = request.selection;
    event.notification.target = request.target;
    event.notification.property = property;
    xcb_send_event(connection_, 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, event.bytes.data());
    xcb_flush(connection_);
}

/// Must not run on the owner's thread, which receives the answer.
xcb_timestamp_t ScriptedOwner::fetchTime() {
    std::unique_lock lock(mutex_);
    time_ = 0;
    xcb_change_property(connection_, XCB_PROP_MODE_APPEND, window_, timeProperty_, XCB_ATOM_INTEGER, 32, 0,
                        nullptr);
    xcb_flush(connection_);
    changed_.wait_for(lock, timeOut, [this] { return time_ != 0; });
    return time_;
}

} // namespace tavel
