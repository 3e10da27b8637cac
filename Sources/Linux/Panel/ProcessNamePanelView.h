#pragma once

#include "Linux/Base/System.h"
#include "Platform/NamePanelView.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace tavel {

/// The path of the program tavel-panel, in the directory of our modules.
std::filesystem::path namePanelProgramPath();

/// Makes a panel on the X server that DISPLAY names. The program tavel-panel shows it in a process of its
/// own, so that this process never loads a toolkit. Waits until the window exists, for at most three seconds.
/// Null if the program or the server is missing, or the window does not exist by then; the reason is logged.
///
/// GLib's default main context reads the program's reports while the panel is shown. Other programs see the
/// window as this process's own. If the program or the server ends while the panel is shown, the panel calls
/// the cancel action. What the program and its libraries write to standard error is logged, up to a limit.
/// Main thread only.
///
/// `copied` gets each text that the user copies in the panel. What the panel's process has put on the
/// clipboard would go with it.
std::unique_ptr<NamePanelView>
makeProcessNamePanelView(const NamePanelTexts& texts, const NamePanelActions& actions,
                         const std::function<void(const std::string&)>& copied, const Log& log,
                         const std::filesystem::path& program = namePanelProgramPath());

} // namespace tavel
