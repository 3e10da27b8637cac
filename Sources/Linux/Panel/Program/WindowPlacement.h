#pragma once

#include "Platform/ScreenGeometry.h"

#include <gdk/gdk.h>

/// Converts between GDK's coordinates and those of ScreenGeometry. Both count in GDK's application pixels,
/// each of which is one or more pixels of the X server, the same number on all monitors. Both start at the
/// left edge of the root window, which holds all monitors. ScreenGeometry counts y upwards from its bottom,
/// GDK downwards from its top: y = height of the root window - y of GDK.
namespace tavel {

/// What a window manager's frame adds to a window on each side, in application pixels.
struct FrameExtents {
    int left = 0;
    int right = 0;
    int top = 0;
    int bottom = 0;
};

/// Asks the window manager which frame it would give the window (EWMH, _NET_REQUEST_FRAME_EXTENTS). Call this
/// before the window is mapped, but after its size hints and its type are set, because the frame depends on
/// them. Waits for at most a tenth of a second; without an answer, all extents are 0.
FrameExtents frameExtents(GdkWindow* window);

/// The bottom left corner of the pixel that the pointer is on, so that each pixel of a screen is within it.
ScreenPoint pointerPlace(GdkDisplay* display);

/// The monitors, in GDK's order.
std::vector<Screen> screensOf(GdkDisplay* display);

/// The size of a panel with that frame.
ScreenSize framedPanelSize(const FrameExtents& frame);

struct WindowPlace {
    int x = 0;
    int y = 0;
};

/// The top left corner, in GDK's coordinates, of the framed panel whose bottom left corner is `origin`.
WindowPlace topLeftOf(ScreenPoint origin, const FrameExtents& frame);

} // namespace tavel
