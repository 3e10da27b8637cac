#pragma once

#include "TavelClipboardAgent/main/Protocol/AgentMessage.h"

#include <string>
#include <string_view>

namespace tavel {

/// How a terminal shows a paragraph.
enum class Tone { normal, dim, failure, warning };

/// One or more lines for people, without a line feed behind the last one.
struct Paragraph {
    std::string text;
    Tone tone = Tone::normal;
};

/// What the agent said, in words. Nothing in it gives a terminal orders. `requestName` names the request that
/// a reply belongs to.
Paragraph describeMessage(const AgentMessage& message, std::string_view requestName);

/// The same for a line that is no message.
Paragraph describeUnintelligible(std::string_view line);

/// The paragraph in its tone's colour, or plain.
std::string render(const Paragraph& paragraph, bool colored);

} // namespace tavel
