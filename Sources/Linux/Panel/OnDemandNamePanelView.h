#pragma once

#include "Linux/Base/System.h"
#include "Platform/NamePanelView.h"

#include <filesystem>
#include <memory>
#include <string>

namespace tavel {

/// Where the program tavel-panel lies: beside the directory of the running program, in ../lib/tavel.
std::filesystem::path namePanelProgramPath();

/// A window on the X server that DISPLAY names, which the program tavel-panel shows: no toolkit is ever part
/// of this process. Waits until the window is there, for three seconds at the most. Null, with a line in the
/// log, if there is no program, no server, or no window by then.
///
/// The window is served by GLib's default main context. Other programs see it as this process's own. If its
/// process or its server ends while it is shown, it reports that it was cancelled. What the program has to
/// say about errors goes to the log. Main thread only.
std::unique_ptr<NamePanelView>
makeOnDemandNamePanelView(const NamePanelTexts& texts, const NamePanelActions& actions, const Log& log,
                          const std::filesystem::path& program = namePanelProgramPath());

} // namespace tavel
