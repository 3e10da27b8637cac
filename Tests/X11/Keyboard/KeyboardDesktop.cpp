#include "Tests/X11/Keyboard/KeyboardDesktop.h"

#include "Linux/X11/Keyboard/XkbProtocol.h"
#include "Linux/X11/X11Reply.h"

#include <unistd.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <stdexcept>

namespace tavel {

KeyboardDesktop::KeyboardDesktop() : connection_(xcb_connect(server_.display().c_str(), nullptr)) {
    if (xcb_connection_has_error(connection_) != 0)
        throw std::runtime_error("The server takes no connection.");
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    const auto cookie = xcb_xkb_use_extension(connection_, XCB_XKB_MAJOR_VERSION, XCB_XKB_MINOR_VERSION);
    const X11Reply<xcb_xkb_use_extension_reply_t> reply(
        xcb_xkb_use_extension_reply(connection_, cookie, nullptr));
    repeatKeys(false);
}

KeyboardDesktop::~KeyboardDesktop() {
    xcb_disconnect(connection_);
}

xcb_atom_t KeyboardDesktop::atom(std::string_view name) const {
    const auto cookie = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const X11Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection_, cookie, nullptr));
    return reply != nullptr ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

xcb_window_t KeyboardDesktop::open(std::string_view className, xcb_window_t frame) {
    const xcb_window_t window = xcb_generate_id(connection_);
    const std::uint32_t events = XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE;
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, frame != XCB_WINDOW_NONE ? frame : root_, 0,
                      0, 100, 100, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                      &events);
    std::string names("window");
    names.append(1, '\0').append(className).append(1, '\0');
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                        static_cast<std::uint32_t>(names.size()), names.data());
    const auto process = static_cast<std::uint32_t>(getpid());
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom("_NET_WM_PID"), XCB_ATOM_CARDINAL,
                        32, 1, &process);
    show(window);
    return window;
}

void KeyboardDesktop::show(xcb_window_t window) {
    xcb_map_window(connection_, window);
    synchronize();
}

void KeyboardDesktop::hide(xcb_window_t window) {
    xcb_unmap_window(connection_, window);
    synchronize();
}

void KeyboardDesktop::close(xcb_window_t window) {
    xcb_destroy_window(connection_, window);
    synchronize();
}

void KeyboardDesktop::activate(xcb_window_t window) {
    xcb_set_input_focus(connection_, XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, root_, atom("_NET_ACTIVE_WINDOW"),
                        XCB_ATOM_WINDOW, 32, 1, &window);
    synchronize();
}

void KeyboardDesktop::press(std::uint8_t code) {
    fakeKey(XCB_KEY_PRESS, code);
    synchronize();
}

void KeyboardDesktop::release(std::uint8_t code) {
    fakeKey(XCB_KEY_RELEASE, code);
    synchronize();
}

void KeyboardDesktop::fakeKey(std::uint8_t type, std::uint8_t code) {
    xcb_test_fake_input(connection_, type, code, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
}

void KeyboardDesktop::pressOnDevice(std::uint8_t code) {
    fakeDeviceKey(XCB_INPUT_DEVICE_KEY_PRESS, code);
}

void KeyboardDesktop::releaseOnDevice(std::uint8_t code) {
    fakeDeviceKey(XCB_INPUT_DEVICE_KEY_RELEASE, code);
}

/// XTEST makes events of a device, too, if it is told their types in the extension's numbers.
void KeyboardDesktop::fakeDeviceKey(std::uint8_t type, std::uint8_t code) {
    constexpr std::uint8_t xvfbKeyboard = 7;
    const std::uint8_t first = xcb_get_extension_data(connection_, &xcb_input_id)->first_event;
    xcb_test_fake_input(connection_, static_cast<std::uint8_t>(first + type), code, XCB_CURRENT_TIME,
                        XCB_WINDOW_NONE, 0, 0, xvfbKeyboard);
    synchronize();
}

void KeyboardDesktop::type(std::initializer_list<std::uint8_t> codes) {
    for (const std::uint8_t code : codes)
        fakeKey(XCB_KEY_PRESS, code);
    for (auto code = std::rbegin(codes); code != std::rend(codes); ++code)
        fakeKey(XCB_KEY_RELEASE, *code);
    xcb_flush(connection_);
}

void KeyboardDesktop::repeatKeys(bool on) {
    const std::uint32_t mode = on ? XCB_AUTO_REPEAT_MODE_ON : XCB_AUTO_REPEAT_MODE_OFF;
    xcb_change_keyboard_control(connection_, XCB_KB_AUTO_REPEAT_MODE, &mode);
    synchronize();
}

void KeyboardDesktop::useLayout(const std::string& options) {
    if (std::system(("setxkbmap -display " + display() + " " + options).c_str()) != 0)
        throw std::runtime_error("setxkbmap does not take " + options);
}

void KeyboardDesktop::useGroup(std::uint8_t group) {
    // The core keyboard, and the XTEST keyboard, whose group the core keyboard takes with the next key.
    constexpr std::uint8_t theKeyboard = 3;
    constexpr std::uint8_t testKeyboard = 5;
    for (const std::uint8_t device : {theKeyboard, testKeyboard})
        xcb_xkb_latch_lock_state(connection_, device, 0, 0, 1, group, 0, 0, 0);
    synchronize();
}

std::vector<ReceivedKey> KeyboardDesktop::received(xcb_window_t window) {
    using Event = X11Reply<xcb_generic_event_t>;
    for (Event event(xcb_poll_for_event(connection_)); event != nullptr;
         event.reset(xcb_poll_for_event(connection_))) {
        if (event->response_type != XCB_KEY_PRESS && event->response_type != XCB_KEY_RELEASE)
            continue;
        const auto& key = reinterpret_cast<const xcb_key_press_event_t&>(*event);
        received_.push_back({key.event, {key.detail, key.response_type == XCB_KEY_PRESS, key.state}});
    }
    std::vector<ReceivedKey> found;
    for (const Received& one : received_) {
        if (one.window == window)
            found.push_back(one.key);
    }
    return found;
}

std::vector<ReceivedKey> KeyboardDesktop::received(xcb_window_t window, std::uint8_t code) {
    std::vector<ReceivedKey> keys = received(window);
    std::erase_if(keys, [code](const ReceivedKey& key) { return key.code != code; });
    return keys;
}

std::size_t KeyboardDesktop::pressesOf(xcb_window_t window, std::uint8_t code) {
    const std::vector<ReceivedKey> keys = received(window, code);
    return static_cast<std::size_t>(std::ranges::count(keys, true, &ReceivedKey::isDown));
}

bool KeyboardDesktop::isGrabbed(xcb_window_t window, std::uint8_t code, unsigned int modifiers) const {
    // While the server is grabbed, other programs' grabs wait instead of failing because of this one.
    xcb_grab_server(connection_);
    const auto cookie = xcb_grab_key_checked(connection_, 0, window, static_cast<std::uint16_t>(modifiers),
                                             code, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    xcb_ungrab_key(connection_, code, window, static_cast<std::uint16_t>(modifiers));
    xcb_ungrab_server(connection_);
    const X11Reply<xcb_generic_error_t> error(xcb_request_check(connection_, cookie));
    return error != nullptr && error->error_code == XCB_ACCESS;
}

void KeyboardDesktop::synchronize() const {
    const auto cookie = xcb_get_input_focus(connection_);
    const X11Reply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection_, cookie, nullptr));
}

} // namespace tavel
