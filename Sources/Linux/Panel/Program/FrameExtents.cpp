#include "Linux/Panel/Program/FrameExtents.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <gdk/gdkx.h>

#include <chrono>
#include <optional>
#include <thread>

namespace tavel {

namespace {

constexpr std::chrono::milliseconds longestWait{100};
constexpr std::chrono::milliseconds interval{1};

Display* displayOf(GdkWindow* window) {
    return gdk_x11_display_get_xdisplay(gdk_window_get_display(window));
}

std::optional<FrameExtents> readExtents(GdkWindow* window) {
    Atom type = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long rest = 0;
    unsigned char* data = nullptr;
    const Atom property = gdk_x11_get_xatom_by_name("_NET_FRAME_EXTENTS");
    const int status = XGetWindowProperty(displayOf(window), gdk_x11_window_get_xid(window), property, 0, 4,
                                          False, XA_CARDINAL, &type, &format, &count, &rest, &data);
    std::optional<FrameExtents> extents;
    if (status == Success && type == XA_CARDINAL && format == 32 && count == 4) {
        const auto* const values = reinterpret_cast<const long*>(data); // as Xlib gives 32 bits
        const int scale = gdk_window_get_scale_factor(window);
        const auto value = [&](int index) { return static_cast<int>(values[index]) / scale; };
        extents = FrameExtents{value(0), value(1), value(2), value(3)};
    }
    if (data != nullptr)
        XFree(data);
    return extents;
}

void requestExtents(GdkWindow* window) {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = gdk_x11_window_get_xid(window);
    event.xclient.message_type = gdk_x11_get_xatom_by_name("_NET_REQUEST_FRAME_EXTENTS");
    event.xclient.format = 32;
    XSendEvent(displayOf(window), gdk_x11_get_default_root_xwindow(), False,
               SubstructureRedirectMask | SubstructureNotifyMask, &event);
}

bool canBeAsked(GdkWindow* window) {
    return gdk_x11_screen_supports_net_wm_hint(gdk_window_get_screen(window),
                                               gdk_atom_intern_static_string("_NET_REQUEST_FRAME_EXTENTS")) !=
           FALSE;
}

} // namespace

FrameExtents frameExtents(GdkWindow* window) {
    if (!canBeAsked(window))
        return {};
    requestExtents(window);
    const auto end = std::chrono::steady_clock::now() + longestWait;
    while (std::chrono::steady_clock::now() < end) {
        // Asked again and again, as GDK takes the events that would tell.
        if (const auto answer = readExtents(window))
            return *answer;
        std::this_thread::sleep_for(interval);
    }
    return {};
}

} // namespace tavel
