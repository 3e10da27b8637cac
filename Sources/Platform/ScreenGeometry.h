#pragma once

#include <vector>

/// Places on the user's screens. All are in points, in the one coordinate system of all screens, whose y
/// grows upwards.
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

/// What there is to consider when a window is placed.
struct ScreenSurroundings {
    ScreenPoint pointer;
    std::vector<Screen> screens; // in the system's order
    ScreenSize window;           // with its title bar and borders
};

} // namespace tavel
