#include "Tests/Protocol/AgentTest.h"
#include "Tests/Support/WaitUntil.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace tavel {

namespace {

class ParentWatch : public AgentTest {
protected:
    /// Starts an agent below a shell, which can die while this process keeps the agent's pipes open. The
    /// shell adds `furtherArguments`.
    AgentProcess& startBelowShell(const std::string& furtherArguments) {
        AgentProcess::Options below = options();
        // By default a shell gives background processes an empty input.
        below.launcher = {"/bin/sh", "-c", R"(exec 3<&0; "$0" "$@" )" + furtherArguments + " <&3 & wait"};
        return start(below);
    }

    static void killShell(AgentProcess& agent) {
        agent.signal(SIGKILL);
        ASSERT_TRUE(WIFSIGNALED(agent.waitForExit()));
    }

    /// A reported change proves that the agent has checked its parent: each poll starts with that.
    void expectPolling(AgentProcess& agent) {
        const std::int64_t sequence = otherApplication().copyText("hi");
        EXPECT_EQ(agent.nextMessage(), announcement(sequence));
        EXPECT_EQ(agent.nextMessage(), textEvent("aGk", 2, sequence));
        expectSilence(agent);
    }

    void expectSurvivingItsParent(const std::string& furtherArguments) {
        AgentProcess& agent = startBelowShell(furtherArguments);
        killShell(agent);
        expectPolling(agent);
        agent.closeInput();
        EXPECT_EQ(agent.nextLine(), std::nullopt);
        EXPECT_TRUE(exportDirectories().empty());
    }
};

TEST_F(ParentWatch, endsTheAgentWhenItsParentDies) {
    AgentProcess& agent = startBelowShell("--parent-pid $$");
    expectPolling(agent);
    EXPECT_EQ(exportDirectories().size(), 1u);
    killShell(agent);
    // The agent was the last process with the output open.
    EXPECT_EQ(agent.nextLine(), std::nullopt);
    EXPECT_TRUE(exportDirectories().empty());
}

TEST_F(ParentWatch, needsNoTick) {
    AgentProcess::Options watched = options();
    watched.arguments.insert(watched.arguments.end(), {"--parent-pid", std::to_string(getpid())});
    AgentProcess& agent = start(watched);
    expectPolling(agent);
    agent.waitUntilAtRest();
}

TEST_F(ParentWatch, endsAnAgentWhoseOutputNobodyReads) {
    AgentProcess& agent = startBelowShell("--parent-pid $$");
    std::string lines;
    for (std::uint64_t requestID = 0; requestID < 5000; ++requestID)
        lines += pingLine(requestID);
    agent.send(lines);
    waitUntilStalled(agent);
    agent.signal(SIGKILL); // the shell
    // This process still holds both pipes, and reads nothing.
    waitUntil([&] { return agent.isOutputAbandoned(); }, AgentProcess::deadline);
    EXPECT_TRUE(exportDirectories().empty());
}

TEST_F(ParentWatch, letsTheAgentRunWhileItsParentLives) {
    AgentProcess& agent =
        start(options({"--test-pasteboard", *sharedPasteboard, "--parent-pid", std::to_string(getpid())}));
    expectPolling(agent);
    expectPolling(agent);
}

TEST_F(ParentWatch, endsTheAgentAtOnceBelowAnotherParent) {
    AgentProcess& agent = launch(options({"--parent-pid", "2147483647"}));
    EXPECT_EQ(agent.waitForExit(), 0);
    EXPECT_EQ(agent.remainingMessages(), std::vector<Json>());
    EXPECT_TRUE(exportDirectories().empty());
}

TEST_F(ParentWatch, beginsWithTheIdentifier2) {
    // 2 may happen to be this process.
    const std::string smallest = getpid() == 2 ? "3" : "2";
    EXPECT_EQ(launch(options({"--parent-pid", smallest})).waitForExit(), 0);
}

TEST_F(ParentWatch, isOffWithoutAnIdentifier) {
    expectSurvivingItsParent("");
}

TEST_F(ParentWatch, isOffForTheIdentifier0) {
    expectSurvivingItsParent("--parent-pid 0");
}

TEST_F(ParentWatch, isOffForTheIdentifier1) {
    expectSurvivingItsParent("--parent-pid 1");
}

TEST_F(ParentWatch, isOffForANegativeIdentifier) {
    expectSurvivingItsParent("--parent-pid -$$");
}

} // namespace

} // namespace tavel
