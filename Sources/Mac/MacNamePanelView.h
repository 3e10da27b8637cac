#pragma once

#include "Platform/NamePanelView.h"

#include <memory>

namespace tavel {

/// The naming panel as a window of this application, not shown yet. Null if no window can be made. Main
/// thread only.
std::unique_ptr<NamePanelView> makeMacNamePanelView(const NamePanelTexts& texts,
                                                    const NamePanelActions& actions);

} // namespace tavel
