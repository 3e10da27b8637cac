#pragma once

#include "Doctor/Report.h"
#include "Platform/Platform.h"

#include <string>

/// What the doctor learns from the operating system itself. Each system has its own implementation. Main
/// thread.
namespace tavel::surroundings {

/// What to do about a place that was passed over although the environment names it.
std::string adviceOn(const PassedOverPlace& place);

/// Reports the modules and programs that belong to the agent, in a section of their own, and what is lost
/// without each. Loads the modules.
void examineHelpers(Report& report, Platform& platform);

/// Reports the parts of the file prompt. `isAccepted`: whether the agent could switch it on. If not, taps the
/// keyboard for a moment, to learn why.
void examineFilePrompt(Report& report, Platform& platform, bool isAccepted);

/// Reports which program owns the general pasteboard's content, as far as the system tells.
void examineOwner(Report& report, Platform& platform);

/// Whether a content can be read without asking another program or the user for it.
bool isContentAtHand(Platform& platform);

} // namespace tavel::surroundings
