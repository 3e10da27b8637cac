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

/// Plays a short session between a parent application, the agent and another application, tells it on
/// standard output, and checks each step. It works on a pasteboard of its own, and leaves nothing behind.
class Demo {
public:
    struct Programs {
        std::filesystem::path agent;
        std::filesystem::path pasteboardTool; // plays the other application
    };

    Demo(Programs programs, std::chrono::milliseconds patience);
    ~Demo();

    /// Throws Error when something does not happen as it must.
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

    /// Types the line as a person would, and awaits success.
    void command(const std::string& line);
    /// nullopt if the agent says something that is no message.
    std::optional<AgentMessage> nextMessage(std::string_view expected);
    /// The next two messages: that the clipboard changed, and what it holds.
    template <typename Change>
    Change nextChange(std::string_view expected);

    /// What the other application gets of that type, which it also shows the size of.
    std::string pasteData(const std::string& type);
    /// Runs the other application to its end, and gives what it wrote.
    std::string runPasteboardTool(const std::vector<std::string>& arguments, const std::string& input = {});
    std::filesystem::path writeFile(const std::string& name, std::string_view content);

    void narrate(std::string_view line) const;
    void showIndented(const std::string& text) const;
    void await(const std::function<bool()>& done, std::string_view what);

    Programs programs_;
    std::chrono::milliseconds patience_;
    std::string pasteboard_;
    std::filesystem::path directory_;
    std::vector<Watch> signalWatches_;
    bool interrupted_ = false;

    struct Said {
        std::optional<AgentMessage> message;
        std::string description;
    };

    std::deque<Said> said_; // not looked at yet
    std::optional<int> agentEnd_;
    std::unique_ptr<Agent> agent_; // calls back, so it goes first
};

} // namespace tavel
