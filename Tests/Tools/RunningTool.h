#pragma once

#include "Tests/Tools/World.h"

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

namespace tavel {

struct ToolResult {
    int status;         // the exit status; 128 and the signal's number where one ended the program
    std::string output; // of a program on a terminal also its errors, and with CR LF
    std::string errors;
};

/// A program at work. Every wait is bounded; what lasts longer throws, with what the program wrote so far.
class RunningTool {
public:
    enum class Place { pipes, terminal };

    /// The terminal of Place::terminal is this large.
    static constexpr unsigned short terminalColumns = 40;
    static constexpr unsigned short terminalRows = 24;

    RunningTool(const World& world, const std::vector<std::string>& arguments, Place place = Place::pipes);
    /// Kills the program if it still runs.
    ~RunningTool();
    RunningTool(const RunningTool&) = delete;
    RunningTool& operator=(const RunningTool&) = delete;

    /// Written whenever the program reads, while this object waits for something.
    void send(std::string_view input);
    void closeInput();
    void sendSignal(int number) const;

    pid_t processIdentifier() const { return process_; }

    /// Waits until `text` comes in the output, behind what an earlier call waited for. Gives the output from
    /// there up to the end of `text`.
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
    int input_ = -1; // a terminal's master descriptor is both, and only listed as output
    int output_ = -1;
    int errors_ = -1;
    bool onTerminal_ = false;
    bool closing_ = false;
    std::string pendingInput_;
    std::string outputText_;
    std::string errorText_;
    std::size_t seen_ = 0; // bytes of the output that were waited for
};

/// Runs a program from its start to its end.
ToolResult runTool(const World& world, const std::vector<std::string>& arguments,
                   std::string_view input = {});

} // namespace tavel
