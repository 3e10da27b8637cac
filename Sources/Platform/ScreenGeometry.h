#pragma once

#include <vector>

/// Positions on the user's screens, in points. All screens share one coordinate system, in which y grows
/// upwards.
namespace tavel {

struct ScreenPoint {
    double x = 0;
    double y = 0;
};

struct ScreenSize {
    double width = 0;
    double height = 0;
};

struct ScreenRectangle {
    double x = 0; // of the left edge
    double y = 0; // of the bottom edge
    double width = 0;
    double height = 0;
};

struct Screen {
    ScreenRectangle frame;
    ScreenRectangle visibleFrame; // without bars and docks
};

/// What placing a window depends on.
struct ScreenSurroundings {
    ScreenPoint pointer;
    std::vector<Screen> screens; // in the system's order
    ScreenSize window;           // with its title bar and borders
};

} // namespace tavel
