#pragma once

#include "Tests/Tools/World.h"

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

namespace tavel {

struct ToolResult {
    int status;         // the exit status, or 128 plus the number of the signal that ended the program
    std::string output; // on a terminal: with the errors, and with CR LF
    std::string errors;
};

/// A running program. Every wait has a time-out, and throws with the output so far when it passes.
class RunningTool {
public:
    enum class Place { pipes, terminal };

    /// The size of the terminal of Place::terminal.
    static constexpr unsigned short terminalColumns = 40;
    static constexpr unsigned short terminalRows = 24;

    RunningTool(const World& world, const std::vector<std::string>& arguments, Place place = Place::pipes);
    /// Kills the program if it is still running.
    ~RunningTool();
    RunningTool(const RunningTool&) = delete;
    RunningTool& operator=(const RunningTool&) = delete;

    /// Queues the input, which the waiting calls below write.
    void send(std::string_view input);
    void closeInput();
    void sendSignal(int number) const;

    pid_t processIdentifier() const { return process_; }

    /// Waits for `text` in the output behind the match of the previous call. Returns the output from there to
    /// the end of `text`.
    std::string waitForOutput(std::string_view text);

    /// Waits until the program ends.
    ToolResult finish();

private:
    void startOnPipes(const World& world, const std::vector<std::string>& arguments);
    void startOnTerminal(const World& world, const std::vector<std::string>& arguments);
    bool exchange();
    void writeInput();
    void readInto(std::string& target, int& descriptor);
    [[noreturn]] void giveUp(const std::string& what) const;

    pid_t process_ = 0;
    int input_ = -1; // unused on a terminal, whose master descriptor is output_
    int output_ = -1;
    int errors_ = -1;
    bool onTerminal_ = false;
    bool closing_ = false;
    std::string pendingInput_;
    std::string outputText_;
    std::string errorText_;
    std::size_t seen_ = 0; // bytes of the output up to the end of the last match
};

/// Runs a program to its end.
ToolResult runTool(const World& world, const std::vector<std::string>& arguments,
                   std::string_view input = {});

} // namespace tavel
