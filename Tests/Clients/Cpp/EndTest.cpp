#include "Tests/Clients/Cpp/FakeAgent.h"

#include <csignal>
#include <utility>
#include <vector>

namespace tavel::client {

namespace {

/// What the client does when the agent is missing, hangs or dies.
class ClientEnd : public FakeAgentTest {};

TEST_F(ClientEnd, tellsThatTheProgramIsMissing) {
    const std::filesystem::path path = directory_ / "agent";
    ClipboardAgent agent(of(path), handlers());
    EXPECT_THROW(agent.start(), AgentNotFound);
    directory_.makeFile("agent", "no program");
    EXPECT_THROW(agent.start(), AgentNotFound);
    EXPECT_FALSE(agent.isRunning());
    expectFailure<AgentEnded>(agent.ping());
    EXPECT_FALSE(agent.sendLine("{}"));
    EXPECT_TRUE(agent.end());
}

TEST_F(ClientEnd, failsPendingAndLaterCommandsAfterACrash) {
    ClipboardAgent agent(of(realAgent()), handlers());
    agent.start();
    agent.ping().get();
    kill(agent.processIdentifier(), SIGSTOP);
    std::vector<ClipboardAgent::Count> counts;
    for (int i = 0; i < 3; ++i)
        counts.push_back(agent.ping());
    kill(agent.processIdentifier(), SIGKILL);
    for (ClipboardAgent::Count& count : counts)
        expectFailure<AgentEnded>(std::move(count));
    expectFailure<AgentEnded>(agent.ping());
    const End crash = ends_.take();
    EXPECT_EQ(crash.description(), "signal 9");
    EXPECT_FALSE(crash.requested);
    expectNoZombie(agent);

    agent.restart();
    agent.ping().get();
    EXPECT_TRUE(agent.end());
    const End end = ends_.take();
    EXPECT_EQ(end.description(), "exit status 0");
    EXPECT_TRUE(end.requested);
    expectNoZombie(agent);
}

TEST_F(ClientEnd, tellsThatQuitWasRequested) {
    ClipboardAgent agent(of(realAgent()), handlers());
    agent.start();
    agent.quit().get();
    EXPECT_TRUE(ends_.take().requested);
}

TEST_F(ClientEnd, waitsForAStoppedAgentNoLongerThanTheTimeOut) {
    ClipboardAgent agent(impatient(realAgent()), handlers());
    agent.start();
    kill(agent.processIdentifier(), SIGSTOP);
    expectFailure<AgentTimeout>(agent.ping());
    const std::string moreThanThePipeTakes(std::size_t{8} * 1024 * 1024, 'x');
    expectFailure<AgentTimeout>(agent.writeImageData(moreThanThePipeTakes));
    EXPECT_FALSE(agent.end(shortTime));
    EXPECT_EQ(ends_.take().description(), "signal 9");
    expectNoZombie(agent);
}

TEST_F(ClientEnd, keepsNoMoreThanTheLongestQueueForAStoppedAgent) {
    Options options = of(program("exec sleep 60"));
    options.longestQueue = std::size_t{1024} * 1024;
    ClipboardAgent agent(options);
    agent.start();
    const std::string halfAMegabyte(std::size_t{512} * 1024, 'x');
    const auto first = agent.writeText(halfAMegabyte);
    expectFailure<AgentBusy>(agent.writeText(halfAMegabyte));
    EXPECT_FALSE(agent.sendLine(halfAMegabyte));
    agent.end({});
}

TEST_F(ClientEnd, carriesOutTheCommandsThatWaitBeforeIt) {
    ClipboardAgent agent(of(realAgent()));
    agent.start();
    std::vector<ClipboardAgent::Count> counts;
    for (int i = 0; i < 100; ++i)
        counts.push_back(agent.ping());
    EXPECT_TRUE(agent.end());
    for (ClipboardAgent::Count& count : counts)
        EXPECT_NO_THROW(count.get());
}

TEST_F(ClientEnd, isNoticedThoughAnotherProcessHoldsTheOutput) {
    ClipboardAgent agent(of(program("read -r line; sleep 60 & reply \"$line\" $!; read -r line")),
                         handlers());
    agent.start();
    const auto child = static_cast<pid_t>(agent.ping().get());
    agent.sendLine("{}"); // after which it ends without a word
    EXPECT_EQ(ends_.take().description(), "exit status 0");
    kill(child, SIGKILL);
}

TEST_F(ClientEnd, followsWhenTheAgentClosesItsOutput) {
    ClipboardAgent agent(of(program("exec >&-; while read -r line; do :; done; exit 3")), handlers());
    agent.start();
    expectFailure<AgentEnded>(agent.ping());
    EXPECT_EQ(ends_.take().description(), "exit status 3");
}

TEST_F(ClientEnd, doesNotComeFromSigpipe) {
    const auto former = std::signal(SIGPIPE, SIG_DFL); // a signal would end this process
    ClipboardAgent agent(impatient(program("exec <&-; log ready; exec sleep 60")), handlers());
    agent.start();
    events_.take();
    expectFailure<AgentTimeout>(agent.ping());
    agent.end({});
    EXPECT_EQ(std::signal(SIGPIPE, former), SIG_DFL);
}

TEST_F(ClientEnd, takesNoStatusFromAnApplicationThatReapsEverything) {
    const auto former = std::signal(SIGCHLD, SIG_IGN); // the system then forgets the status
    ClipboardAgent agent(of(realAgent()), handlers());
    agent.start();
    EXPECT_TRUE(agent.end());
    EXPECT_EQ(ends_.take().waitStatus, std::nullopt);
    std::signal(SIGCHLD, former);
}

} // namespace

} // namespace tavel::client
