#pragma once

#include "Linux/X11/X11Connection.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavel {

/// What an X server tells of its desktop, on a connection of its own. When the server is lost, results are
/// empty. One thread.
class X11Desktop {
public:
    /// Connects to the server of DISPLAY; null if that fails.
    static std::unique_ptr<X11Desktop> open();

    /// Whether a window manager reports the active window (EWMH).
    bool hasWindowManager();

    /// The classes of the known file managers' windows, in lower case, each once.
    std::vector<std::string> runningFileManagers();

    /// The program that owns CLIPBOARD, for people: its process and the class of its window, as far as the
    /// server knows. Never the window's title, which may quote what was copied.
    std::string describeClipboardOwner();

private:
    explicit X11Desktop(std::unique_ptr<X11Connection> connection) : connection_(std::move(connection)) {}

    X11Reply<xcb_get_property_reply_t> property(xcb_window_t window, const char* name, xcb_atom_t type);
    std::string classOf(xcb_window_t window);
    std::optional<std::uint32_t> processOf(xcb_window_t window);
    xcb_window_t root();

    std::unique_ptr<X11Connection> connection_;
};

} // namespace tavel
