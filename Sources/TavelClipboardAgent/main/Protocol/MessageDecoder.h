#pragma once

#include "TavelClipboardAgent/main/Protocol/AgentMessage.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// Decodes a line that the agent wrote; its line feed may be missing. nullopt unless the line is one JSON
/// object that has every key of a reply or of a known event, with a value of the right type. Other keys are
/// ignored.
std::optional<AgentMessage> decodeMessage(std::string_view line);

/// What a parent needs to know of a command line to find the reply that belongs to it.
struct CommandHead {
    std::uint64_t requestID;
    std::string name;
};

/// nullopt unless the line is one JSON object with a string "command" and an unsigned 64-bit "request_id".
/// The agent accepts more (see CommandDecoder).
std::optional<CommandHead> decodeCommandHead(std::string_view line);

} // namespace tavel
