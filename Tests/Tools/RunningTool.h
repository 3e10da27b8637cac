#pragma once

#include "Tests/Support/TestProcess.h"
#include "Tests/Tools/World.h"

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

struct ToolResult {
    int status;         // the exit status, or 128 plus the number of the signal that ended the program
    std::string output; // on a terminal: with the errors, and with CR LF
    std::string errors;
};

/// A running program, which is killed with this object. Every wait has a time-out, and throws with the output
/// so far when it passes.
class RunningTool {
public:
    enum class Place { pipes, terminal };

    /// The size of the terminal of Place::terminal.
    static constexpr unsigned short terminalColumns = 40;
    static constexpr unsigned short terminalRows = 24;

    RunningTool(const World& world, const std::vector<std::string>& arguments, Place place = Place::pipes);

    /// Queues the input, which the waiting calls below write.
    void send(std::string_view input) { process_.queue(input); }
    void closeInput() { process_.closeInput(); }
    void sendSignal(int number) const { process_.signal(number); }

    pid_t processIdentifier() const { return process_.processIdentifier(); }

    /// Waits for `text` in the output behind the match of the previous call. Returns the output from there to
    /// the end of `text`.
    std::string waitForOutput(std::string_view text);

    /// Waits until the program ends.
    ToolResult finish();

private:
    TestProcess process_;
    std::size_t seen_ = 0; // bytes of the output up to the end of the last match
};

/// Runs a program to its end.
ToolResult runTool(const World& world, const std::vector<std::string>& arguments,
                   std::string_view input = {});

} // namespace tavel
