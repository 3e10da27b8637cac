#pragma once

#include "Console/ChildProcess.h"
#include "Console/LineSplitter.h"
#include "TavelClipboardAgent/main/Protocol/AgentMessage.h"
#include "TavelClipboardAgent/main/Protocol/ClipboardCommand.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// The clipboard agent as its parent sees it: numbers the requests and tells what the agent says. Works while
/// the main context runs.
class Agent {
public:
    struct Handlers {
        /// Every line in either direction, as it stands.
        std::function<void(std::string_view line)> sent;
        std::function<void(std::string_view line)> received;
        /// A received line, decoded. `requestName` names the request that a reply belongs to, and is empty
        /// for everything else.
        std::function<void(const AgentMessage& message, std::string_view requestName)> said;
        /// A received line that is no message.
        std::function<void(std::string_view line)> unintelligible;
        /// The agent is gone, with this status of waitpid; it has said everything.
        std::function<void(int status)> ended;
    };

    /// Starts the agent on the pasteboard of that name, or on the general one. Throws Error.
    Agent(const std::filesystem::path& executable, const std::optional<std::string>& pasteboard,
          Handlers handlers);

    /// Numbers the command and sends it. `name` is what people call it. Returns the number. Every string of
    /// the command must be UTF-8.
    std::uint64_t send(std::string name, ClipboardCommand command);

    /// Sends a line that somebody else has made and numbered.
    void sendLine(std::string_view line);

    /// Whether some request still has no reply.
    bool hasOutstandingRequests() const { return !outstanding_.empty(); }

    bool isRunning() const { return process_.isRunning(); }

    /// Ends the agent by ending its input, and waits for it. False if it had to be made to end by signals
    /// because the time was over.
    bool end(std::chrono::milliseconds patience);

private:
    void receive(std::string_view line);
    void noteEnd(int status);

    Handlers handlers_;
    LineSplitter lines_;
    std::uint64_t lastRequestID_ = 0;
    std::multimap<std::uint64_t, std::string> outstanding_; // names by number; others may use a number twice
    ChildProcess process_;                                  // calls back, so it goes first
};

} // namespace tavel
