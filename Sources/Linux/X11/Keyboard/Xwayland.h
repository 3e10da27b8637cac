#pragma once

#include <xcb/xcb.h>

namespace tavel {

/// Whether the X server is Xwayland, which shows its windows on a Wayland compositor and gets no keys of
/// native Wayland programs. Newer ones say so by an extension, and all by the names of their outputs. Some
/// round trips; false if the server is lost.
bool isXwayland(xcb_connection_t* connection, xcb_window_t root);

} // namespace tavel
