#pragma once

#include "Tests/Support/XServer.h"

#include <xcb/xcb.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// Key codes of a PC keyboard on the X server.
namespace pcKey {
inline constexpr std::uint8_t leftControl = 37;
inline constexpr std::uint8_t a = 38;
inline constexpr std::uint8_t leftShift = 50;
inline constexpr std::uint8_t v = 55;
inline constexpr std::uint8_t dvorakV = 60;
inline constexpr std::uint8_t leftAlt = 64;
inline constexpr std::uint8_t capsLock = 66;
inline constexpr std::uint8_t numLock = 77;
inline constexpr std::uint8_t rightControl = 105;
inline constexpr std::uint8_t leftSuper = 133;
} // namespace pcKey

/// A key event that a program has received.
struct ReceivedKey {
    std::uint8_t code = 0;
    bool isDown = false;
    std::uint16_t state = 0; // modifiers and group before the event

    bool operator==(const ReceivedKey& other) const { return code == other.code && isDown == other.isDown; }
};

/// An X server with a user who types, a window manager that activates windows, and programs with windows. One
/// connection acts as all of them.
class KeyboardDesktop {
public:
    KeyboardDesktop();
    ~KeyboardDesktop();
    KeyboardDesktop(const KeyboardDesktop&) = delete;
    KeyboardDesktop& operator=(const KeyboardDesktop&) = delete;

    XServer& server() { return server_; }
    const std::string& display() const { return server_.display(); }
    xcb_connection_t* connection() const { return connection_; }
    xcb_window_t root() const { return root_; }

    /// Opens a visible window of that class, inside the window manager's frame `frame` if that is given.
    xcb_window_t open(std::string_view className, xcb_window_t frame = XCB_WINDOW_NONE);
    void show(xcb_window_t window);
    void hide(xcb_window_t window);
    void close(xcb_window_t window);

    /// Makes the window the active one and gives it the focus.
    void activate(xcb_window_t window);

    void press(std::uint8_t code);
    void release(std::uint8_t code);

    /// The same on the keyboard of the server, while `press` and `release` stand for one of XTEST.
    void pressOnDevice(std::uint8_t code);
    void releaseOnDevice(std::uint8_t code);

    /// Presses the keys in this order and releases them in reverse. Does not wait for the server.
    void type(std::initializer_list<std::uint8_t> codes);

    /// Sets whether a held key repeats. Off at first.
    void repeatKeys(bool on);

    /// Sets the layouts with options of setxkbmap.
    void useLayout(const std::string& options);

    /// Switches to the layout with that number, counted from 0.
    void useGroup(std::uint8_t group);

    /// The key events that the window has received so far: all of them, or those of one key.
    std::vector<ReceivedKey> received(xcb_window_t window);
    std::vector<ReceivedKey> received(xcb_window_t window, std::uint8_t code);

    /// How often the window has received a press of the key.
    std::size_t pressesOf(xcb_window_t window, std::uint8_t code);

    /// Whether another program has grabbed the key on the window. Does not disturb a grab at the same moment.
    bool isGrabbed(xcb_window_t window, std::uint8_t code,
                   unsigned int modifiers = XCB_MOD_MASK_CONTROL) const;

    /// Waits until the server has carried out all requests of this connection.
    void synchronize() const;

private:
    struct Received {
        xcb_window_t window;
        ReceivedKey key;
    };

    xcb_atom_t atom(std::string_view name) const;
    void fakeKey(std::uint8_t type, std::uint8_t code);
    void fakeDeviceKey(std::uint8_t type, std::uint8_t code);

    XServer server_;
    xcb_connection_t* connection_;
    xcb_window_t root_ = XCB_WINDOW_NONE;
    std::vector<Received> received_;
};

} // namespace tavel
