#pragma once

#include "TavelClipboardAgent/main/Protocol/AgentMessage.h"

#include <string>
#include <string_view>

namespace tavel {

/// Selects the colour on a terminal.
enum class Tone { normal, dim, failure, warning };

/// One or more lines, without a line feed at the end.
struct Paragraph {
    std::string text;
    Tone tone = Tone::normal;
};

/// The message for people, without control sequences for the terminal. `requestName` names the request that a
/// reply belongs to; empty if unknown.
Paragraph describeMessage(const AgentMessage& message, std::string_view requestName);

/// Describes a line that is no message.
Paragraph describeUnintelligible(std::string_view line);

/// The paragraph in its tone's colour, or plain.
std::string render(const Paragraph& paragraph, bool colored);

} // namespace tavel
