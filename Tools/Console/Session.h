#pragma once

#include "Console/Agent.h"
#include "Console/HumanCommand.h"
#include "Console/LineEditor.h"
#include "Console/LineSplitter.h"
#include "Console/Options.h"
#include "Console/Paragraph.h"
#include "Console/ReplyComparison.h"
#include "Console/Trace.h"
#include "Console/Watch.h"

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// One session of a user or a script with the agent. On a terminal, lines can be edited, and messages appear
/// as they arrive. Otherwise the session reads plain lines, and waits for each reply before it takes the next
/// line, so that the output follows the order of the commands. A recorded session takes the place of both.
class Session {
public:
    /// Starts the agent. `clipboard` describes the one that the agent uses. Throws Error if it cannot.
    Session(const ConsoleOptions& options, const std::filesystem::path& agentExecutable,
            std::string clipboard);

    /// Runs until the user or the agent ends the session. Returns the exit status.
    int run();

private:
    Agent::Handlers agentHandlers();
    void runOnTerminal();
    void runOnLines();
    void replay();

    bool isOver() const;
    bool waitForKeyboard();
    bool waitForNextLine();
    bool waitForReplies();
    bool waitForReplies(std::size_t replies);
    bool waitForTime(std::chrono::steady_clock::time_point due);
    int end();

    void handleLine(std::string_view line);
    void note(Speaker speaker, std::string_view line);
    void compare(const AgentMessage& message, std::string_view requestName);
    void showRaw(char direction, std::string_view line);
    void show(const Paragraph& paragraph);
    void print(const std::string& lines);
    int complain(std::string_view what) const;

    ConsoleOptions options_;
    std::string clipboard_;
    std::optional<TraceWriter> trace_;
    std::vector<TracedLine> record_; // to be played again
    ReplyComparison comparison_;
    Places places_;
    bool onTerminal_;
    bool colored_;
    std::vector<Watch> signalWatches_;
    std::unique_ptr<LineEditor> editor_; // on a terminal only
    std::vector<std::string> pendingLines_;
    LineSplitter inputLines_;
    bool inputEnded_ = false;
    bool outputFailed_ = false;
    bool interrupted_ = false;
    bool quitting_ = false;
    bool unanswered_ = false;
    std::optional<int> agentEnd_;
    bool agentEndExpected_ = false;
    Agent agent_; // calls back into the members above, so it is destroyed first
};

} // namespace tavel
