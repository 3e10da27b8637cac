#pragma once

#include "Platform/ScreenGeometry.h"

#include <optional>

namespace tavel {

/// The bottom left corner for a window that opens beside the pointer, to the right and below, and within the
/// visible part of its screen; of a window that is too large the left and bottom edges are. Nothing if the
/// pointer is on no screen.
std::optional<ScreenPoint> panelOrigin(const ScreenSurroundings& surroundings);

} // namespace tavel
