#include "Tests/Tools/RunningTool.h"

#include <sys/wait.h>

#include <chrono>
#include <stdexcept>
#include <utility>

namespace tavel {

namespace {

TestProcess::Options processOptions(const World& world, const std::vector<std::string>& arguments,
                                    RunningTool::Place place) {
    TestProcess::Options options;
    options.program = arguments.front();
    options.arguments = arguments;
    options.environment = world.environment();
    options.directory = world.directory();
    if (place == RunningTool::Place::terminal)
        options.terminal = {RunningTool::terminalRows, RunningTool::terminalColumns};
    else
        options.capturesErrors = true;
    return options;
}

} // namespace

RunningTool::RunningTool(const World& world, const std::vector<std::string>& arguments, Place place)
    : process_(processOptions(world, arguments, place)) {}

std::string RunningTool::waitForOutput(std::string_view text) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + TestProcess::deadline;
    for (;;) {
        const std::string& output = process_.output();
        const std::size_t found = output.find(text, seen_);
        if (found != std::string::npos) {
            const std::size_t begin = std::exchange(seen_, found + text.size());
            return output.substr(begin, seen_ - begin);
        }
        if (process_.hasEndedOutput() || Clock::now() > deadline)
            throw std::runtime_error("waited in vain for \"" + std::string(text) + "\"; output so far:\n" +
                                     output + "\nerrors so far:\n" + process_.errors());
        process_.transfer(std::chrono::milliseconds{100});
    }
}

ToolResult RunningTool::finish() {
    const int status = process_.waitForEnd();
    return {WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status), process_.output(),
            process_.errors()};
}

ToolResult runTool(const World& world, const std::vector<std::string>& arguments, std::string_view input) {
    RunningTool tool(world, arguments);
    tool.send(input);
    tool.closeInput();
    return tool.finish();
}

} // namespace tavel
