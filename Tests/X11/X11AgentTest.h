#pragma once

#include "Tests/Protocol/AgentTest.h"
#include "Tests/Support/XServer.h"
#include "Tests/Tools/RunningTool.h"
#include "Tests/Tools/World.h"

#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// The fixture of tests with the real agent: an X server of their own, agents and other programs on it.
class X11AgentTest : public AgentTest {
protected:
    X11AgentTest();

    /// Starts an agent on this test's server, by default on CLIPBOARD.
    AgentProcess::Options x11Options(std::vector<std::string> arguments = {}) const;

    /// The agent that watches CLIPBOARD. Starts with the first call.
    AgentProcess& agent();

    /// Runs a program on this test's server and waits for its end.
    ToolResult run(const std::vector<std::string>& arguments, std::string_view input = {}) const;

    /// The output of a program, which must succeed.
    std::string outputOf(const std::vector<std::string>& arguments, std::string_view input = {}) const;

    /// Starts a program that runs until the end of the test, and waits until it has printed "ready".
    RunningTool& startReady(const std::vector<std::string>& arguments);

    /// Makes xclip the owner of CLIPBOARD.
    void copyWithXclip(std::string_view content, const std::string& target = "UTF8_STRING") const;

    /// The value that xclip reads for the target.
    std::string pasteWithXclip(const std::string& target = "UTF8_STRING") const;

    /// The targets that the owner of CLIPBOARD lists, without those of the protocol.
    std::vector<std::string> contentTargets() const;

    XServer server_;
    World world_;

private:
    std::deque<RunningTool> tools_;
    AgentProcess* agent_ = nullptr;
};

} // namespace tavel
