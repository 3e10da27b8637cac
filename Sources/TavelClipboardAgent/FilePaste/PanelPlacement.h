#pragma once

#include "Platform/ScreenGeometry.h"

#include <optional>

namespace tavel {

/// The bottom left corner of a window that opens to the right of the pointer and below it, within the visible
/// frame of the pointer's screen. A window that is too large for the frame keeps its left and bottom edges
/// visible. nullopt if the pointer is on no screen.
std::optional<ScreenPoint> panelOrigin(const ScreenSurroundings& surroundings);

} // namespace tavel
