#pragma once

#include "Doctor/Report.h"
#include "Platform/Platform.h"
#include "TavelClipboardAgent/main/Protocol/AgentMessage.h"

#include <chrono>
#include <filesystem>
#include <optional>

namespace tavel {

/// Starts the agent at that path, and reports whether it works, how long it takes, and whether a text that it
/// writes can be read, on a pasteboard of the trial's own. Returns its answer to switching the file prompt
/// on, which is switched off again; nullopt if the agent gave none. `timeout` limits each wait for the agent.
std::optional<Reply> examineAgent(Report& report, Platform& platform, const std::filesystem::path& executable,
                                  std::chrono::milliseconds timeout);

} // namespace tavel
