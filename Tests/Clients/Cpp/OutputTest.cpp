#include "Tests/Clients/Cpp/FakeAgent.h"

#include <string>
#include <thread>
#include <vector>

namespace tavel::client {

namespace {

/// What the client makes of the lines of an agent, or of another program.
class ClientOutput : public FakeAgentTest {
protected:
    /// Prints the line as soon as it gets a command, and stays.
    std::filesystem::path saying(const std::string& line) {
        const std::filesystem::path text = directory_.makeFile("line", line);
        return program("read -r line; cat '" + text.string() + "'; exec sleep 60");
    }
};

TEST_F(ClientOutput, matchesTheRepliesOfConcurrentCommands) {
    ClipboardAgent agent(
        of(program("while read -r line; do number \"$line\" n; n=$number; reply \"$line\" $n; done")));
    agent.start();
    std::vector<std::thread> threads;
    for (std::uint64_t thread = 1; thread <= 4; ++thread) {
        threads.emplace_back([&agent, thread] {
            for (std::uint64_t i = thread * 1000; i < thread * 1000 + 50; ++i)
                EXPECT_EQ(agent.request(command::Other{"ping", {{"n", i}}}).get(), i);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

TEST_F(ClientOutput, givesALateReplyToNobodyElse) {
    ClipboardAgent agent(
        impatient(program("read -r first; read -r second; reply \"$first\" 1; reply \"$second\" 2\n")));
    agent.start();
    expectFailure<AgentTimeout>(agent.ping());
    EXPECT_EQ(agent.ping().get(), 2U);
}

TEST_F(ClientOutput, endsAProgramThatWritesNoLineOfAnAgent) {
    const std::string change = R"({"event":"change","marker":"","sequence":1)";
    for (const std::string& line :
         std::vector<std::string>{"text",
                                  "",
                                  "[]",
                                  "7",
                                  "{",
                                  "\xff",
                                  R"({"request_id":1})",
                                  R"({"request_id":1,"ok":1,"reason":"","sequence":1})",
                                  R"({"request_id":"1","ok":true,"reason":"","sequence":1})",
                                  R"({"request_id":1,"ok":true,"reason":"","sequence":-1})",
                                  change + "}",
                                  change + R"(,"text_b64":"?"})",
                                  change + R"(,"text_b64":"w6k/A"})",
                                  change + R"(,"kind":7})",
                                  change + R"(,"kind":"files","paths":[7]})",
                                  change + R"(,"kind":"image","paths":[]})",
                                  R"({"event":"log","level":"warning"})",
                                  R"({"event":"file_renamed"})",
                                  R"({"event":7})",
                                  std::string(100'000, '[')}) {
        SCOPED_TRACE(line.substr(0, 80));
        ClipboardAgent agent(of(saying(line + "\n")), handlers());
        agent.start();
        expectFailure<ProtocolError>(agent.ping());
        EXPECT_EQ(ends_.take().protocolProblem, "the program wrote what no agent writes");
        expectNoZombie(agent);
    }
}

TEST_F(ClientOutput, endsAProgramThatWritesTooLongALine) {
    for (const std::size_t length : {1000U, 1001U}) {
        Options options = of(saying(std::string(length, ' ') + "{\"event\":\"news\"}\n"));
        options.longestLine = 1000 + 16;
        ClipboardAgent agent(options, handlers());
        agent.start();
        auto count = agent.ping();
        if (length == 1000)
            EXPECT_EQ(events_.take(), Event(UnknownEvent{{{"event", "news"}}}));
        else
            expectFailure<ProtocolError>(std::move(count));
        agent.end({});
    }
}

TEST_F(ClientOutput, takesHalfALineAtTheEndForNoOtherFailure) {
    ClipboardAgent agent(of(program("read -r line; printf '{'")), handlers());
    agent.start();
    expectFailure<AgentEnded>(agent.ping());
    EXPECT_EQ(ends_.take().protocolProblem, "");
}

TEST_F(ClientOutput, leavesEventsThatItDoesNotKnowToTheApplication) {
    ClipboardAgent agent(of(saying(R"({"event":"news","value":1}
{"event":"change","kind":"news","marker":"","sequence":8}
{"event":"file_renamed","sequence":18446744073709551615,"more":"1"}
)")),
                         handlers());
    agent.start();
    agent.sendLine("{}");
    EXPECT_EQ(events_.take(), Event(UnknownEvent{{{"event", "news"}, {"value", 1}}}));
    EXPECT_EQ(events_.take(),
              Event(UnknownEvent{{{"event", "change"}, {"kind", "news"}, {"marker", ""}, {"sequence", 8}}}));
    EXPECT_EQ(events_.take(), Event(FileRenamed{UINT64_MAX}));
    agent.end({});
}

TEST_F(ClientOutput, goesOnBehindAnUnintelligibleLineForAnApplicationThatWantsIt) {
    HandOver<std::string> unintelligible;
    Handlers wanting = handlers();
    wanting.unintelligible = [&](std::string_view line) { unintelligible.add(std::string(line)); };
    ClipboardAgent agent(of(program("read -r line; echo news; reply \"$line\"; printf rest")), wanting);
    agent.start();
    EXPECT_EQ(agent.ping().get(), 1U);
    EXPECT_EQ(unintelligible.take(), "news");
    EXPECT_EQ(unintelligible.take(), "rest");
    EXPECT_EQ(ends_.take().description(), "exit status 0");
}

} // namespace

} // namespace tavel::client
