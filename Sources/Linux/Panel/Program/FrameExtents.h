#pragma once

#include <gdk/gdk.h>

namespace tavel {

/// How much a window manager's frame adds to a window, in GDK's application pixels.
struct FrameExtents {
    int left = 0;
    int right = 0;
    int top = 0;
    int bottom = 0;
};

/// The frame that the window would get (EWMH, _NET_REQUEST_FRAME_EXTENTS); it must not be mapped yet. Waits
/// for the window manager, for a tenth of a second at the most. No frame if there is no answer. What the
/// frame depends on, sizes and type, must have been set.
FrameExtents frameExtents(GdkWindow* window);

} // namespace tavel
