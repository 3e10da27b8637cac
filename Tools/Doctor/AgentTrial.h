#pragma once

#include "Console/Agent.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

namespace tavel {

/// The real agent on a pasteboard that nobody else uses, so that the user's clipboard stays as it is. The
/// agent is killed with this object. Every wait is bounded by the time-out.
class AgentTrial {
public:
    /// All trials use the same pasteboard, as the store and X servers never forget a name.
    static const std::string pasteboardName;

    /// Throws Error with the reason if the agent cannot be started.
    AgentTrial(const std::filesystem::path& executable, std::chrono::milliseconds timeout);

    /// Sends the command and waits for its reply. Throws Error with the reason if the agent ends, says
    /// something that is no message, or does not answer.
    Reply ask(ClipboardCommand command);

    /// Ends the agent, and waits for that. Throws Error if it does not end by itself, or with another status
    /// than 0.
    void end();

private:
    Agent::Handlers handlers();

    std::chrono::milliseconds timeout_;
    std::optional<Reply> reply_; // to the latest command
    bool isUnintelligible_ = false;
    std::optional<int> end_;
    Agent agent_; // calls back into the members above, so it is destroyed first
};

} // namespace tavel
