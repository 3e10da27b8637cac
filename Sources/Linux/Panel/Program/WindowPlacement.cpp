#include "Linux/Panel/Program/WindowPlacement.h"

#include "Platform/NamePanelLayout.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <gdk/gdkx.h>

#include <chrono>
#include <cmath>
#include <optional>
#include <thread>

namespace tavel {

namespace {

constexpr std::chrono::milliseconds longestWait{100};
constexpr std::chrono::milliseconds pollInterval{1};

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
        const auto* const values = reinterpret_cast<const long*>(data); // Xlib delivers 32-bit values as long
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

int rootHeight() {
    return gdk_window_get_height(gdk_get_default_root_window());
}

ScreenRectangle rectangleOf(const GdkRectangle& place) {
    return {static_cast<double>(place.x), static_cast<double>(rootHeight() - place.y - place.height),
            static_cast<double>(place.width), static_cast<double>(place.height)};
}

} // namespace

FrameExtents frameExtents(GdkWindow* window) {
    if (!canBeAsked(window))
        return {};
    requestExtents(window);
    const auto deadline = std::chrono::steady_clock::now() + longestWait;
    while (std::chrono::steady_clock::now() < deadline) {
        // Polled, because GDK consumes the PropertyNotify events.
        if (const auto answer = readExtents(window))
            return *answer;
        std::this_thread::sleep_for(pollInterval);
    }
    return {};
}

ScreenPoint pointerPlace(GdkDisplay* display) {
    GdkDevice* const pointer = gdk_seat_get_pointer(gdk_display_get_default_seat(display));
    double x = 0;
    double y = 0;
    gdk_device_get_position_double(pointer, nullptr, &x, &y);
    // The place of a row of pixels is its lower edge. A screen contains its own lower edge and not its upper
    // one, which is the upper edge of its topmost row.
    const double rowHeight = 1.0 / gdk_window_get_scale_factor(gdk_get_default_root_window());
    return {x, rootHeight() - y - rowHeight};
}

std::vector<Screen> screensOf(GdkDisplay* display) {
    std::vector<Screen> screens;
    for (int number = 0; number < gdk_display_get_n_monitors(display); ++number) {
        GdkMonitor* const monitor = gdk_display_get_monitor(display, number);
        GdkRectangle frame{};
        GdkRectangle visible{};
        gdk_monitor_get_geometry(monitor, &frame);
        gdk_monitor_get_workarea(monitor, &visible);
        screens.push_back({rectangleOf(frame), rectangleOf(visible)});
    }
    return screens;
}

ScreenSize framedPanelSize(const FrameExtents& frame) {
    return {namePanelLayout::content.width + frame.left + frame.right,
            namePanelLayout::content.height + frame.top + frame.bottom};
}

WindowPlace topLeftOf(ScreenPoint origin, const FrameExtents& frame) {
    const double top = rootHeight() - origin.y - framedPanelSize(frame).height;
    return {static_cast<int>(std::lround(origin.x)), static_cast<int>(std::lround(top))};
}

} // namespace tavel
