#pragma once

#include "Platform/ScreenGeometry.h"

/// The naming panel's layout, in points from the bottom left of its content.
namespace tavel::namePanelLayout {

inline constexpr ScreenSize content{410, 170};
inline constexpr ScreenRectangle extensionLabel{20, 125, 370, 22};
inline constexpr ScreenRectangle field{20, 92, 370, 26};
inline constexpr ScreenRectangle hint{20, 48, 370, 38};
inline constexpr ScreenRectangle cancelButton{210, 12, 90, 30};
inline constexpr ScreenRectangle confirmButton{305, 12, 90, 30};

} // namespace tavel::namePanelLayout
