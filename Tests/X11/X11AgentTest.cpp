#include "Tests/X11/X11AgentTest.h"

#include "Tests/Support/WaitUntil.h"
#include "Tests/X11/ScriptedRequestor.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace tavel {

X11AgentTest::X11AgentTest() {
    world_.setVariable("DISPLAY", server_.display());
}

AgentProcess::Options X11AgentTest::x11Options(std::vector<std::string> arguments) const {
    AgentProcess::Options x11 = options(std::move(arguments));
    x11.environment["DISPLAY"] = server_.display();
    return x11;
}

AgentProcess& X11AgentTest::agent() {
    if (agent_ == nullptr)
        agent_ = &start(x11Options());
    return *agent_;
}

ToolResult X11AgentTest::run(const std::vector<std::string>& arguments, std::string_view input) const {
    std::vector<std::string> found{"/usr/bin/env"}; // searches PATH
    found.insert(found.end(), arguments.begin(), arguments.end());
    return runTool(world_, found, input);
}

std::string X11AgentTest::outputOf(const std::vector<std::string>& arguments, std::string_view input) const {
    ToolResult result = run(arguments, input);
    EXPECT_EQ(result.status, 0) << arguments.front() << ": " << result.errors;
    return std::move(result.output);
}

RunningTool& X11AgentTest::startReady(const std::vector<std::string>& arguments) {
    RunningTool& tool = tools_.emplace_back(world_, arguments);
    tool.waitForOutput("ready");
    return tool;
}

void X11AgentTest::copyWithXclip(std::string_view content, const std::string& target) const {
    ScriptedRequestor observer(server_.display());
    const xcb_window_t before = observer.ownerOfClipboard();
    // xclip goes into the background and keeps its descriptors open, so a pipe to it would never end.
    outputOf({"sh", "-c", R"(xclip -selection clipboard -in -target "$0" >/dev/null 2>&1)", target}, content);
    // The background process may send its request for the selection only after the first process has ended.
    waitUntil([&] { return observer.ownerOfClipboard() != before; }, AgentProcess::deadline);
}

std::string X11AgentTest::pasteWithXclip(const std::string& target) const {
    return outputOf({"xclip", "-selection", "clipboard", "-out", "-target", target});
}

std::vector<std::string> X11AgentTest::contentTargets() const {
    std::istringstream lines(pasteWithXclip("TARGETS"));
    std::vector<std::string> targets;
    for (std::string line; std::getline(lines, line);)
        targets.push_back(line);
    std::erase_if(targets, [](const std::string& target) {
        return target == "TARGETS" || target == "TIMESTAMP" || target == "MULTIPLE" ||
               target == "SAVE_TARGETS";
    });
    return targets;
}

} // namespace tavel
