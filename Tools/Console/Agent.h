#pragma once

#include "Console/Watch.h"
#include "TavelClipboardAgent/main/Protocol/AgentMessage.h"
#include "TavelClipboardAgent/main/Protocol/ClipboardCommand.h"
#include "tavel/ClipboardAgent.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// The clipboard agent as its parent sees it: numbers the requests, and calls back with the agent's messages
/// while the main context runs.
class Agent {
public:
    struct Handlers {
        /// Every line in either direction, verbatim.
        std::function<void(std::string_view line)> sent;
        std::function<void(std::string_view line)> received;
        /// A received line, decoded. `requestName` names the request that a reply belongs to, and is empty
        /// for everything else.
        std::function<void(const AgentMessage& message, std::string_view requestName)> said;
        /// A received line that is no message.
        std::function<void(std::string_view line)> unintelligible;
        /// The agent has ended, with this status of waitpid. No message follows.
        std::function<void(int status)> ended;
    };

    /// Starts the agent on the pasteboard of that name, or on the general one. Throws Error if it cannot.
    Agent(const std::filesystem::path& executable, const std::optional<std::string>& pasteboard,
          Handlers handlers);

    /// Numbers the command and sends it. `name` is what people call it. Returns the number. Every string of
    /// the command must be UTF-8.
    std::uint64_t send(std::string name, ClipboardCommand command);

    /// Sends a line that the user wrote, with its own number.
    void sendLine(std::string_view line);

    /// Whether a request still awaits its reply.
    bool hasOutstandingRequests() const { return !outstanding_.empty(); }

    /// Whether the end has not been told yet.
    bool isRunning() const { return !hasEnded_; }

    /// Closes the agent's input, waits for its end, and tells what came until then. False if it did not end
    /// in time and had to be signalled.
    bool end(std::chrono::milliseconds timeout);

private:
    void receive(std::string_view line);

    Handlers handlers_;
    bool hasEnded_ = false;
    std::uint64_t lastRequestID_ = 0;
    /// Names of commands by number. The user may use a number twice.
    std::multimap<std::uint64_t, std::string> outstanding_;
    client::ClipboardAgent client_; // calls back into the members above, so it is destroyed first
    Watch clientWatch_;
};

} // namespace tavel
