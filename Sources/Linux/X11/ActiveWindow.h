#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// A program's window as its properties describe it.
struct ProgramWindow {
    xcb_window_t window = 0;
    std::int32_t processIdentifier = 0; // as the program says (EWMH, _NET_WM_PID)
    std::string className;              // the second part of WM_CLASS (ICCCM 4.1.2.5)
};

/// Tells which window the window manager calls active (EWMH, _NET_ACTIVE_WINDOW). Belongs to one connection,
/// whose default screen it looks at; any thread that may use that connection.
class ActiveWindow {
public:
    /// Costs one round trip.
    ActiveWindow(xcb_connection_t* connection, xcb_window_t root);

    /// The root window's property that changes with the active window.
    xcb_atom_t property() const { return activeWindow_; }

    /// Two round trips. Nothing if there is none, it says no process, or it is just going.
    std::optional<ProgramWindow> read() const;

    /// Asks the window manager to activate the window, as if the user had picked it in a list.
    void activate(xcb_window_t window) const;

private:
    xcb_connection_t* connection_;
    xcb_window_t root_;
    xcb_atom_t activeWindow_ = XCB_ATOM_NONE;
    xcb_atom_t processIdentifier_ = XCB_ATOM_NONE;
};

/// Whether windows of that class are a file manager's that this agent knows.
bool isFileManagerClass(std::string_view className);

} // namespace tavel
