#include "Tests/Clients/Cpp/FakeAgent.h"

#include <poll.h>

#include <array>
#include <csignal>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace tavel::client {

namespace {

using testing::ElementsAre;

/// How the client calls the application, and what it gives to the agent.
class ClientCalls : public FakeAgentTest {
protected:
    static bool isReadable(int descriptor, int timeout) {
        pollfd watched{descriptor, POLLIN, 0};
        return poll(&watched, 1, timeout) == 1;
    }

    std::string nextMessage() { return std::get<LogMessage>(events_.take()).message; }
};

TEST_F(ClientCalls, mayWaitForReplies) {
    HandOver<std::uint64_t> counts;
    std::unique_ptr<ClipboardAgent> agent;
    agent = std::make_unique<ClipboardAgent>(
        of(program("log 0\n" + std::string(replyToAll))),
        Handlers{.event = [&](const Event&) { counts.add(agent->ping().get()); }});
    agent->start();
    EXPECT_EQ(counts.take(), 1U);
}

TEST_F(ClientCalls, mayStartTheAgentAgain) {
    HandOver<pid_t> processes;
    std::unique_ptr<ClipboardAgent> agent;
    agent = std::make_unique<ClipboardAgent>(of(realAgent()), Handlers{.ended = [&](const End& end) {
                                                 if (end.requested)
                                                     return;
                                                 agent->restart();
                                                 processes.add(agent->processIdentifier());
                                             }});
    agent->start();
    const pid_t first = agent->processIdentifier();
    kill(first, SIGKILL);
    EXPECT_NE(processes.take(), first);
    agent->ping().get();
}

TEST_F(ClientCalls, tellACompletionTheCountOrTheError) {
    ClipboardAgent agent(of(realAgent()));
    agent.start();
    HandOver<ClipboardAgent::Count> counts;
    const auto completion = [&](ClipboardAgent::Count count) { counts.add(std::move(count)); };
    agent.request(command::Ping{}, completion);
    EXPECT_NO_THROW(counts.take().get());
    agent.request(command::WriteImageData{"no picture"}, completion);
    expectFailure<CommandRefused>(counts.take());
    agent.end();
    agent.request(command::Ping{}, completion);
    expectFailure<AgentEnded>(counts.take());
}

TEST_F(ClientCalls, showEveryLineInItsOrder) {
    std::vector<std::string> lines; // by one thread, until the end is told
    ClipboardAgent agent(
        of(program("read -r line; log 'a/b'; reply \"$line\"")),
        {.ended = [this](const End& end) { ends_.add(end); },
         .sent = [&](std::string_view line) { lines.push_back(">" + std::string(line)); },
         .received = [&](std::string_view line) { lines.push_back("<" + std::string(line)); }});
    agent.start();
    EXPECT_TRUE(agent.sendLine(R"({"request_id":7 })"));
    EXPECT_THROW(agent.sendLine("{\n}"), std::invalid_argument);
    ends_.take();
    EXPECT_THAT(lines,
                ElementsAre(R"(>{"request_id":7 })", R"(<{"event":"log","level":"warning","message":"a/b"})",
                            R"(<{"request_id":7,"ok":true,"reason":"","sequence":1})"));
}

TEST_F(ClientCalls, areMadeInProcessForAnApplicationWithAnEventLoop) {
    Options options = of(program(replyToAll));
    options.calls = Options::Calls::inProcess;
    std::vector<std::thread::id> callers;
    ClipboardAgent agent(options,
                         {.ended = [&](const End&) { callers.push_back(std::this_thread::get_id()); }});
    agent.start();
    EXPECT_FALSE(isReadable(agent.descriptor(), 0));
    agent.request(command::Ping{},
                  [&](ClipboardAgent::Count) { callers.push_back(std::this_thread::get_id()); });
    EXPECT_EQ(agent.ping().get(), 1U); // does not need the event loop
    EXPECT_TRUE(isReadable(agent.descriptor(), 0));
    EXPECT_TRUE(callers.empty());
    agent.process();
    EXPECT_FALSE(isReadable(agent.descriptor(), 0));
    agent.end();
    EXPECT_TRUE(isReadable(agent.descriptor(), 60'000));
    agent.process();
    EXPECT_THAT(callers, ElementsAre(std::this_thread::get_id(), std::this_thread::get_id()));
}

TEST_F(ClientCalls, leaveTheLinesInThePipeWhileTheApplicationIsBusy) {
    constexpr std::size_t lines = 50'000;
    constexpr std::size_t mostAtOnce = 64 + 64 * 1024 / 50; // and those of one more read
    Options options = of(program(R"(seq -f '{"event":"log","level":"warning","message":"%.0f"}' 0 49999)"
                                 "\n" +
                                 std::string(replyToAll)));
    options.calls = Options::Calls::inProcess;
    std::vector<std::string> messages;
    ClipboardAgent agent(options, {.event = [&](const Event& event) {
                             messages.push_back(std::get<LogMessage>(event).message);
                         }});
    agent.start();
    std::this_thread::sleep_for(2 * shortTime); // busy, while the agent could send everything
    while (messages.size() < lines) {
        ASSERT_TRUE(isReadable(agent.descriptor(), 60'000)) << messages.size();
        const std::size_t before = messages.size();
        agent.process();
        ASSERT_LE(messages.size() - before, mostAtOnce);
    }
    for (std::size_t i = 0; i < lines; ++i)
        ASSERT_EQ(messages[i], std::to_string(i));
    EXPECT_EQ(agent.ping().get(), 1U);
}

TEST_F(ClientCalls, endWithTheObject) {
    for (int i = 0; i < 20; ++i) {
        ClipboardAgent agent(of(program("log 1; log 2\n" + std::string(replyToAll))), handlers());
        agent.start();
        agent.ping().get();
    }
}

TEST_F(ClientCalls, refuseWhatIsNotUtf8) {
    ClipboardAgent agent(of(realAgent()));
    agent.start();
    EXPECT_THROW(agent.writeText("", "\xff"), std::invalid_argument);
    EXPECT_THROW(agent.writeFiles({"/\xff"}), std::invalid_argument);
    EXPECT_THROW(agent.request(command::Other{"ping", "no object"}), std::invalid_argument);
    agent.ping().get();
}

TEST_F(ClientCalls, giveTheAgentItsArgumentsAndEnvironment) {
    Options options = of(program(R"(log "$*"; log "$NAME")"));
    options.testPasteboard = "name";
    options.arguments = {"more"};
    options.environment = {"NAME=value"};
    ClipboardAgent agent(options, handlers());
    agent.start();
    EXPECT_EQ(nextMessage(), "--parent-pid " + std::to_string(getpid()) + " --test-pasteboard name more");
    EXPECT_EQ(nextMessage(), "value");
}

TEST_F(ClientCalls, giveTheAgentNoSignalSettingsOfTheApplication) {
    sigset_t blocked;
    sigset_t former;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &blocked, &former);
    const auto handler = std::signal(SIGUSR2, SIG_IGN);
    ClipboardAgent agent(
        of(program(R"sh(log "$(grep Sig[BI] /proc/$$/status | cut -f 2 | cut -c 10-16 | tr '\n' ' ')")sh")),
        handlers());
    agent.start();
    EXPECT_EQ(nextMessage(), "0000000 0000000 ");
    std::signal(SIGUSR2, handler);
    pthread_sigmask(SIG_SETMASK, &former, nullptr);
}

} // namespace

} // namespace tavel::client
