#include "Tests/Protocol/AgentTest.h"

#include <sys/resource.h>
#include <sys/wait.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <sstream>

namespace tavel {

namespace {

class Lifecycle : public AgentTest {
protected:
    /// The nice value of each thread: field 19 of its stat file in /proc. A thread that ends meanwhile is
    /// left out.
    static std::vector<int> niceValues(pid_t process) {
        std::vector<int> values;
        for (const auto& thread :
             std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
            std::ifstream file(thread.path() / "stat");
            const std::string status{std::istreambuf_iterator<char>(file), {}};
            if (status.empty())
                continue;
            std::istringstream fields(status.substr(status.rfind(')') + 1)); // the name may hold anything
            std::string field;
            for (int number = 3; number <= 19; ++number)
                fields >> field;
            values.push_back(std::stoi(field));
        }
        return values;
    }
};

TEST_F(Lifecycle, runsAllThreadsAtNice10) {
    const AgentProcess& agent = start();
    EXPECT_EQ(getpriority(PRIO_PROCESS, static_cast<id_t>(agent.processIdentifier())), 10);
    // The second thread reads the commands.
    EXPECT_THAT(niceValues(agent.processIdentifier()),
                testing::AllOf(testing::SizeIs(testing::Ge(2u)), testing::Each(10)));
}

TEST_F(Lifecycle, leavesNoCoreDump) {
    AgentProcess::Options unlimited = options();
    unlimited.launcher = {"/bin/sh", "-c", R"sh(ulimit -S -c "$(ulimit -H -c)"; exec "$0" "$@")sh"};
    rlimit limit{1, 1};
    ASSERT_EQ(prlimit(start(unlimited).processIdentifier(), RLIMIT_CORE, nullptr, &limit), 0);
    EXPECT_EQ(limit.rlim_cur, 0U);
    EXPECT_EQ(limit.rlim_max, 0U);
}

TEST_F(Lifecycle, saysNothingOfItsOwnAccord) {
    AgentProcess& agent = launch(options());
    agent.closeInput();
    EXPECT_EQ(agent.remainingMessages(), std::vector<Json>());
}

TEST_F(Lifecycle, endsWithStatus0AtEndOfInput) {
    AgentProcess& agent = start();
    agent.closeInput();
    EXPECT_EQ(agent.waitForExit(), 0);
    EXPECT_EQ(agent.nextLine(), std::nullopt);
}

TEST_F(Lifecycle, endsWithStatus0WhenItsInputIsAtItsEndFromTheStart) {
    AgentProcess& agent = launch(options());
    agent.closeInput();
    EXPECT_EQ(agent.waitForExit(), 0);
}

TEST_F(Lifecycle, takesAReadErrorForTheEndOfInput) {
    AgentProcess::Options unreadable = options();
    unreadable.launcher = {"/bin/sh", "-c", R"(exec "$0" "$@" </)"}; // a directory opens, but cannot be read
    EXPECT_EQ(launch(unreadable).waitForExit(), 0);
}

TEST_F(Lifecycle, readsCommandsFromAFileToo) {
    const auto file = directory_.createFile("commands", pingLine(1) + pingLine(2));
    AgentProcess::Options fromFile = options();
    fromFile.launcher = {"/bin/sh", "-c", R"(exec "$0" "$@" <')" + file.string() + "'"};
    AgentProcess& agent = launch(fromFile);
    EXPECT_EQ(agent.remainingMessages(), (std::vector{pingReply(1), pingReply(2)}));
    EXPECT_EQ(agent.waitForExit(), 0);
}

TEST_F(Lifecycle, answersWhatWasSentBeforeTheEndOfInput) {
    constexpr std::uint64_t count = 1000;
    std::string lines;
    std::vector<Json> expected;
    for (std::uint64_t requestID = 0; requestID < count; ++requestID) {
        lines += pingLine(requestID);
        expected.push_back(pingReply(requestID));
    }
    AgentProcess& agent = launch(options());
    agent.send(lines);
    agent.closeInput();
    EXPECT_EQ(agent.remainingMessages(), expected);
    EXPECT_EQ(agent.waitForExit(), 0);
}

TEST_F(Lifecycle, carriesOutWhatWasSentBeforeTheEndOfInput) {
    AgentProcess& agent = launch(options());
    agent.send(R"({"command":"write_text","request_id":7,"text_b64":"aGk","marker":""})"
               "\n");
    agent.closeInput();
    EXPECT_EQ(agent.waitForExit(), 0);
    EXPECT_EQ(otherApplication().text(), "hi");
}

TEST_F(Lifecycle, repliesToQuitAndEndsThoughItsInputStaysOpen) {
    AgentProcess& agent = start();
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(request(agent, {{"command", "quit"}}), success(0));
    EXPECT_EQ(agent.nextLine(), std::nullopt);
    EXPECT_EQ(agent.waitForExit(), 0);
    // The agent must not wait for the thread that is blocked on its input.
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

TEST_F(Lifecycle, answersWhatCameBeforeQuitFirst) {
    AgentProcess& agent = launch(options());
    agent.send(pingLine(1) + pingLine(2) +
               R"({"command":"quit","request_id":3})"
               "\n");
    EXPECT_EQ(nextMessages(agent, 3), (std::vector{pingReply(1), pingReply(2), pingReply(3)}));
    EXPECT_EQ(agent.waitForExit(), 0);
}

TEST_F(Lifecycle, leavesThePasteboardAloneAfterQuit) {
    AgentProcess& agent = start();
    // While the agent writes this text, it reads all the other commands.
    std::string lines = R"({"command":"write_text","request_id":6,"marker":"","text_b64":")" +
                        repeated("YWFh", 1'000'000) + "\"}\n" + R"({"command":"quit","request_id":7})" + "\n";
    for (int command = 0; command < 20; ++command) {
        lines += R"({"command":"write_text","request_id":8,"text_b64":"aGk","marker":""})"
                 "\n";
    }
    agent.send(lines);
    EXPECT_EQ(agent.remainingMessages(), (std::vector{pingReply(6, 1), pingReply(7, 1)}));
    EXPECT_EQ(agent.waitForExit(), 0);
    EXPECT_EQ(otherApplication().text().value_or("").size(), 3'000'000U);
}

TEST_F(Lifecycle, endsWithinALineOfInput) {
    AgentProcess& agent = start();
    agent.send(R"({"command":"quit","request_id":7})"
               "\n"
               R"({"command":"pi)");
    EXPECT_EQ(agent.nextMessage(), pingReply(7));
    EXPECT_EQ(agent.waitForExit(), 0);
}

TEST_F(Lifecycle, leavesTheTerminationSignalToTheSystem) {
    AgentProcess& agent = start();
    agent.signal(SIGTERM);
    const int status = agent.waitForExit();
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGTERM);
}

TEST_F(Lifecycle, leavesTheBrokenPipeSignalToTheSystem) {
    AgentProcess& agent = start();
    agent.closeOutput();
    agent.send(pingLine(7));
    const int status = agent.waitForExit();
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGPIPE);
}

} // namespace

} // namespace tavel
