#include "Linux/Panel/Program/ScreenPlaces.h"

#include "Platform/NamePanelLayout.h"

#include <cmath>

namespace tavel {

namespace {

int rootHeight() {
    return gdk_window_get_height(gdk_get_default_root_window());
}

ScreenRectangle rectangleOf(const GdkRectangle& place) {
    return {static_cast<double>(place.x), static_cast<double>(rootHeight() - place.y - place.height),
            static_cast<double>(place.width), static_cast<double>(place.height)};
}

} // namespace

ScreenPoint pointerPlace(GdkDisplay* display) {
    GdkDevice* const pointer = gdk_seat_get_pointer(gdk_display_get_default_seat(display));
    double x = 0;
    double y = 0;
    gdk_device_get_position_double(pointer, nullptr, &x, &y);
    return {x, rootHeight() - y};
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
