#pragma once

#include "TavelClipboardAgent/main/Protocol/AgentMessage.h"
#include "TavelClipboardAgent/main/Protocol/ClipboardCommand.h"

#include <optional>
#include <string>

namespace tavel {

/// The message as one line with its line feed. A text is encoded from its own bytes straight into the line.
/// nullopt if a string is not UTF-8: JSON cannot hold it.
std::optional<std::string> encodeMessage(const AgentMessage& message);

/// The command as one line with its line feed; absent fields are left out. nullopt if a string is not UTF-8,
/// and for command::Unknown, which has no name.
std::optional<std::string> encodeCommand(const ClipboardCommand& command);

} // namespace tavel
