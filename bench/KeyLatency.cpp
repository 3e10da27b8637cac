// key-latency: presses Control+V and then F12, on which it has a grab itself. Prints the milliseconds until
// F12 arrives: the server delays that key until the owner of the first grab has decided.

#include "Linux/X11/X11Reply.h"

#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace {

// The key codes of evdev keyboards.
constexpr xcb_keycode_t control = 37;
constexpr xcb_keycode_t v = 55;
constexpr xcb_keycode_t f12 = 96;

void fake(xcb_connection_t* connection, std::uint8_t type, xcb_keycode_t key) {
    xcb_test_fake_input(connection, type, key, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
}

} // namespace

int main() {
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection) != 0)
        return EXIT_FAILURE;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const auto grab = xcb_grab_key_checked(connection, 0, root, XCB_MOD_MASK_ANY, f12, XCB_GRAB_MODE_ASYNC,
                                           XCB_GRAB_MODE_ASYNC);
    if (xcb_request_check(connection, grab) != nullptr)
        return EXIT_FAILURE;
    const auto start = std::chrono::steady_clock::now();
    fake(connection, XCB_KEY_PRESS, control);
    fake(connection, XCB_KEY_PRESS, v);
    fake(connection, XCB_KEY_RELEASE, v);
    fake(connection, XCB_KEY_RELEASE, control);
    fake(connection, XCB_KEY_PRESS, f12);
    fake(connection, XCB_KEY_RELEASE, f12);
    xcb_flush(connection);
    for (;;) {
        const tavel::X11Reply<xcb_generic_event_t> event(xcb_wait_for_event(connection));
        if (event == nullptr)
            return EXIT_FAILURE;
        if (event->response_type == XCB_KEY_PRESS)
            break;
    }
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    std::printf("%.3f\n", time.count());
    xcb_disconnect(connection);
    return EXIT_SUCCESS;
}
