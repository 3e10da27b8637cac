#include "TavelClipboardAgent/FilePaste/PanelPlacement.h"

#include <algorithm>

namespace tavel {

namespace {

constexpr double distanceFromPointer = 12; // points, horizontally and vertically

/// The right and top edges belong to the neighbouring screen.
bool contains(const ScreenRectangle& area, ScreenPoint point) {
    return point.x >= area.x && point.x < area.x + area.width && point.y >= area.y &&
           point.y < area.y + area.height;
}

} // namespace

std::optional<ScreenPoint> panelOrigin(const ScreenSurroundings& surroundings) {
    const ScreenPoint pointer = surroundings.pointer;
    const auto screen = std::ranges::find_if(
        surroundings.screens, [pointer](const Screen& one) { return contains(one.frame, pointer); });
    if (screen == surroundings.screens.end())
        return std::nullopt;
    const ScreenRectangle& visible = screen->visibleFrame;
    const auto [width, height] = surroundings.window;
    return ScreenPoint{
        std::max(visible.x, std::min(visible.x + visible.width - width, pointer.x + distanceFromPointer)),
        std::max(visible.y,
                 std::min(visible.y + visible.height - height, pointer.y - height - distanceFromPointer))};
}

} // namespace tavel
