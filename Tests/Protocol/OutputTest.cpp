#include "Tests/Protocol/AgentTest.h"
#include "Tests/Support/WaitUntil.h"

namespace tavel {

namespace {

class Output : public AgentTest {
protected:
    /// The JSON without white space, with its slashes escaped.
    static std::string compact(const std::string& line) {
        std::string text;
        for (const char c : nlohmann::ordered_json::parse(line).dump()) {
            if (c == '/')
                text += '\\';
            text += c;
        }
        return text;
    }

    static void sendPings(AgentProcess& agent, std::uint64_t count) {
        std::string lines;
        for (std::uint64_t requestID = 0; requestID < count; ++requestID)
            lines += pingLine(requestID);
        agent.send(lines);
    }

    static void expectPingReplies(AgentProcess& agent, std::uint64_t count) {
        for (std::uint64_t requestID = 0; requestID < count; ++requestID)
            ASSERT_EQ(agent.nextMessage(), pingReply(requestID));
    }

    /// Requests more replies than the pipe holds, and reads nothing until the agent blocks.
    void expectRepliesAfterAStall(bool nonBlockingPipes) {
        AgentProcess::Options narrow = options();
        narrow.outputPipeBytes = smallestPipe;
        narrow.nonBlockingPipes = nonBlockingPipes;
        AgentProcess& agent = start(narrow);
        constexpr std::uint64_t count = 5000;
        sendPings(agent, count);
        waitUntilStalled(agent);
        agent.setReadSize(100);
        expectPingReplies(agent, count);
    }

    static constexpr int smallestPipe = 4096;
};

TEST_F(Output, isOneCompactLinePerMessage) {
    AgentProcess& agent = start();
    otherApplication().copy(
        {{representation("public.utf8-plain-text", "???\n???"),
          representation(originMarkerType, "a: {\"b\", \\c/}\n\t\x01 \x7F\u00E9\u2028\U0001F600")}});
    for (int message = 0; message < 2; ++message) {
        const auto line = agent.nextLine();
        ASSERT_TRUE(line);
        EXPECT_EQ(*line, compact(*line));
    }
    agent.send(R"({"command":"nonsense","request_id":7})"
               "\n");
    const auto line = agent.nextLine();
    ASSERT_TRUE(line);
    EXPECT_EQ(*line, compact(*line));
}

TEST_F(Output, escapesSlashes) {
    AgentProcess& agent = start();
    otherApplication().copyText("???");
    agent.nextMessage();
    EXPECT_THAT(agent.nextLine().value_or(""), testing::HasSubstr(R"("text_b64":"Pz8\/")"));
    otherApplication().copy({urlItem("file:///a/b")});
    agent.nextMessage();
    EXPECT_THAT(agent.nextLine().value_or(""), testing::HasSubstr(R"("paths":["\/a\/b"])"));
}

TEST_F(Output, writesFrenchTextsAsTheyAreSpelt) {
    AgentProcess& agent = start();
    agent.send(R"({"command":"write_files","request_id":7,"expected_sequence":99})"
               "\n");
    EXPECT_THAT(
        agent.nextLine().value_or(""),
        testing::HasSubstr("\"reason\":\"Le presse-papiers local a chang\u00E9 pendant le transfert\""));
}

TEST_F(Output, reachesAParentThatReadsAFewBytesAtATime) {
    AgentProcess::Options narrow = options();
    narrow.outputPipeBytes = smallestPipe;
    AgentProcess& agent = start(narrow);
    agent.setReadSize(7);
    const std::int64_t sequence = otherApplication().copyText(repeated("abc", 50'000));
    EXPECT_EQ(agent.nextMessage(), announcement(sequence));
    EXPECT_EQ(agent.nextMessage(), textEvent(repeated("YWJj", 50'000), 150'000, sequence));
    expectSilence(agent);
}

TEST_F(Output, reachesAParentThatStoppedReadingForAWhile) {
    expectRepliesAfterAStall(false);
}

TEST_F(Output, waitsForAStalledParentInNonBlockingModeToo) {
    expectRepliesAfterAStall(true);
}

TEST_F(Output, holdsOneContentAtMostForAParentThatDoesNotRead) {
    AgentProcess::Options narrow = options();
    narrow.outputPipeBytes = smallestPipe;
    AgentProcess& agent = start(narrow);
    constexpr std::uint64_t count = 1000;
    sendPings(agent, count);
    waitUntilStalled(agent);
    std::vector<std::int64_t> sequences;
    for (const char* text : {"aaa", "bbb", "ccc"}) {
        sequences.push_back(otherApplication().copyText(text));
        waitForPolls();
    }
    expectPingReplies(agent, count);
    EXPECT_EQ(agent.nextMessage(), announcement(sequences[0]));
    EXPECT_EQ(agent.nextMessage(), textEvent("YWFh", 3, sequences[0]));
    EXPECT_EQ(agent.nextMessage(), announcement(sequences[2]));
    EXPECT_EQ(agent.nextMessage(), textEvent("Y2Nj", 3, sequences[2]));
    agent.send(pingLine(7));
    EXPECT_EQ(agent.nextMessage(), pingReply(7, sequences[2]));
}

TEST_F(Output, carriesOutCommandsForAParentThatDoesNotRead) {
    AgentProcess::Options narrow = options();
    narrow.outputPipeBytes = smallestPipe;
    AgentProcess& agent = start(narrow);
    sendPings(agent, 1000);
    waitUntilStalled(agent);
    agent.send(R"({"command":"write_text","request_id":7,"text_b64":"aGk","marker":""})"
               "\n");
    waitUntil([this] { return otherApplication().text() == "hi"; }, AgentProcess::deadline);
}

TEST_F(Output, comesWholeThoughTheParentReadsItOnlyAfterTheEndOfInput) {
    AgentProcess::Options narrow = options();
    narrow.outputPipeBytes = smallestPipe;
    AgentProcess& agent = start(narrow);
    constexpr std::uint64_t count = 1000;
    sendPings(agent, count);
    agent.send(R"({"command":"quit","request_id":1000})"
               "\n");
    agent.closeInput();
    waitUntil([this] { return exportDirectories().empty(); }, AgentProcess::deadline);
    expectPingReplies(agent, count + 1);
    EXPECT_EQ(agent.nextLine(), std::nullopt);
    EXPECT_EQ(agent.waitForExit(), 0);
}

TEST_F(Output, keepsALargeMessageWholeInNonBlockingMode) {
    AgentProcess::Options nonBlocking = options();
    nonBlocking.nonBlockingPipes = true;
    AgentProcess& agent = start(nonBlocking);
    const std::int64_t sequence = otherApplication().copyText(repeated("abc", 1'000'000));
    waitUntilStalled(agent);
    EXPECT_EQ(agent.nextMessage(), announcement(sequence));
    EXPECT_EQ(agent.nextMessage(), textEvent(repeated("YWJj", 1'000'000), 3'000'000, sequence));
}

} // namespace

} // namespace tavel
