#pragma once

#include "Linux/X11/X11Reply.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tavel {

/// A program's window and its properties.
struct ProgramWindow {
    xcb_window_t window = 0;
    std::int32_t processIdentifier = 0; // as the program states it (EWMH, _NET_WM_PID)
    std::string className;              // the second part of WM_CLASS (ICCCM 4.1.2.5)
};

/// Reads and changes the active window of a connection's default screen (EWMH, _NET_ACTIVE_WINDOW). For any
/// thread that may use the connection.
class ActiveWindow {
public:
    /// One round trip. The connection must outlive this object. `wait` waits for its replies.
    ActiveWindow(xcb_connection_t* connection, xcb_window_t root, ReplyWaiter wait);

    /// The root window's property that names the active window.
    xcb_atom_t property() const { return activeWindow_; }

    /// Two round trips. nullopt if no window is active, or if it states no process or is being destroyed.
    std::optional<ProgramWindow> read() const;

    /// Asks the window manager to activate the window, as a taskbar does when the user picks a window.
    void activate(xcb_window_t window) const;

private:
    xcb_connection_t* connection_;
    xcb_window_t root_;
    ReplyWaiter wait_;
    xcb_atom_t activeWindow_ = XCB_ATOM_NONE;
    xcb_atom_t processIdentifier_ = XCB_ATOM_NONE;
};

/// The classes (WM_CLASS) of the windows of known file managers, in lower case; most are also the names of
/// their programs.
std::span<const std::string_view> fileManagerClassNames();

/// Whether the class is one of those. Ignores ASCII case.
bool isFileManagerClass(std::string_view className);

} // namespace tavel
