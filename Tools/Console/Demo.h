#pragma once

#include "Console/Agent.h"
#include "Console/HumanCommand.h"
#include "Console/Watch.h"

#include <chrono>
#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// Plays a short session between a parent application, the agent and another application. Describes and
/// checks each step on standard output. Uses a pasteboard of its own, and removes everything it made.
class Demo {
public:
    struct Programs {
        std::filesystem::path agent;
        std::filesystem::path pasteboardTool; // the other application
    };

    Demo(Programs programs, std::chrono::milliseconds timeout);
    ~Demo();

    /// Throws Error if a step fails.
    void run();

private:
    void startAgent();
    void sendText();
    void sendFiles();
    void copyTextElsewhere();
    void copyFilesElsewhere();
    void sendPicture();
    void sendFormats();
    void copyPictureElsewhere();
    void copyFormatsElsewhere();
    void quitAgent();

    /// Sends what a typed line asks for, and expects success.
    void command(const std::string& line);
    /// Waits for the next line of the agent. nullopt if it is no message. `expected` is for the error.
    std::optional<AgentMessage> nextMessage(std::string_view expected);
    /// Expects an announcement and the change that describes it; returns the latter.
    template <typename Change>
    Change nextChange(std::string_view expected);

    /// The data of that type which the other application pastes. Prints its size.
    std::string pasteData(const std::string& type);
    /// Runs the other application to its end, and returns its output.
    std::string runPasteboardTool(const std::vector<std::string>& arguments, const std::string& input = {});
    std::filesystem::path writeFile(const std::string& name, std::string_view content);

    void narrate(std::string_view line) const;
    void showIndented(const std::string& text) const;
    void await(const std::function<bool()>& done, std::string_view what);

    Programs programs_;
    std::chrono::milliseconds timeout_;
    std::string pasteboard_;
    std::filesystem::path directory_;
    std::vector<Watch> signalWatches_;
    bool interrupted_ = false;

    struct Said {
        std::optional<AgentMessage> message;
        std::string description;
    };

    std::deque<Said> said_; // not yet awaited
    std::optional<int> agentEnd_;
    std::unique_ptr<Agent> agent_; // calls back into the members above, so it is destroyed first
};

} // namespace tavel
