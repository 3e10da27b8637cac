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

/// What tests with an X server start from: a server of their own, agents on it, and other programs.
class X11AgentTest : public AgentTest {
protected:
    X11AgentTest();

    /// On this test's server, by default on the selection CLIPBOARD.
    AgentProcess::Options x11Options(std::vector<std::string> arguments = {}) const;

    /// An agent that watches CLIPBOARD, started with its first use.
    AgentProcess& agent();

    /// Runs a program from its start to its end on this test's server.
    ToolResult run(const std::vector<std::string>& arguments, std::string_view input = {}) const;

    /// The output of a program that has to succeed.
    std::string outputOf(const std::vector<std::string>& arguments, std::string_view input = {}) const;

    /// Starts a program that lasts as long as the test, and waits until it has printed "ready".
    RunningTool& startReady(const std::vector<std::string>& arguments);

    /// Has xclip own CLIPBOARD from now on.
    void copyWithXclip(std::string_view content, const std::string& target = "UTF8_STRING") const;

    /// What xclip gets for the target.
    std::string pasteWithXclip(const std::string& target = "UTF8_STRING") const;

    /// The targets that CLIPBOARD's owner lists, those of the protocol left out.
    std::vector<std::string> contentTargets() const;

    XServer server_;
    World world_;

private:
    std::deque<RunningTool> tools_;
    AgentProcess* agent_ = nullptr;
};

} // namespace tavel
