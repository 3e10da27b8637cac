#pragma once

#include "Linux/Panel/Program/FrameExtents.h"
#include "Platform/ScreenGeometry.h"

#include <gdk/gdk.h>

/// Between GDK's coordinates and those of ScreenGeometry. A point is an application pixel of GDK, which is
/// one or more of the X server's, the same for all monitors. Both systems start at the left edge of the root
/// window, which holds all monitors; y is counted from its bottom here and from its top there, so that
/// y = height of the root window - y of GDK.
namespace tavel {

ScreenPoint pointerPlace(GdkDisplay* display);

/// The monitors, in GDK's order.
std::vector<Screen> screensOf(GdkDisplay* display);

/// The size of a panel in such a frame.
ScreenSize framedPanelSize(const FrameExtents& frame);

struct WindowPlace {
    int x = 0;
    int y = 0;
};

/// Where GDK's top left corner of the framed panel is if its bottom left corner is at the origin.
WindowPlace topLeftOf(ScreenPoint origin, const FrameExtents& frame);

} // namespace tavel
