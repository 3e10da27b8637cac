#include "Tests/Protocol/AgentTest.h"

namespace tavel {

namespace {

class Framing : public AgentTest {
protected:
    /// A ping of exactly that many bytes, most of them in an unused field.
    static std::string longPing(std::uint64_t requestID, std::size_t bytes) {
        std::string line = R"({"command":"ping","unread":")";
        const std::string end = R"(","request_id":)" + std::to_string(requestID) + "}\n";
        line.reserve(bytes);
        line.append(bytes - line.size() - end.size(), 'x');
        return line + end;
    }
};

TEST_F(Framing, endsLinesAtALineFeedOrAtACarriageReturnBeforeIt) {
    AgentProcess& agent = start();
    agent.send("{\"command\":\"ping\",\"request_id\":1}\n{\"command\":\"ping\",\"request_id\":2}\r\n\r\n\n"
               "{\"command\":\"ping\",\"request_id\":3}\r\r\n");
    for (int requestID = 1; requestID <= 3; ++requestID)
        EXPECT_EQ(agent.nextMessage(), pingReply(requestID));
}

TEST_F(Framing, doesNotEndLinesAtALoneCarriageReturn) {
    AgentProcess& agent = start();
    agent.send("{\"command\":\"ping\",\"request_id\":1}\r{\"command\":\"ping\",\"request_id\":2}\n");
    expectSilence(agent);
}

TEST_F(Framing, readsALastLineWithoutTerminator) {
    AgentProcess& agent = launch(options());
    agent.send(pingLine(1) + R"({"command":"ping","request_id":2})");
    agent.closeInput();
    EXPECT_EQ(agent.remainingMessages(), (std::vector{pingReply(1), pingReply(2)}));
}

TEST_F(Framing, dropsALastLineThatIsCutShort) {
    AgentProcess& agent = launch(options());
    agent.send(pingLine(1) + R"({"command":"ping","request_id":2)");
    agent.closeInput();
    EXPECT_EQ(agent.remainingMessages(), std::vector{pingReply(1)});
    EXPECT_EQ(agent.waitForExit(), 0);
}

TEST_F(Framing, readsALineThatComesByteByByte) {
    AgentProcess& agent = start();
    agent.sendByteByByte("{\"command\":\"p\\u0069ng\",\"request_id\":7,\"unread\":\"\u00E9\"}\r\n");
    EXPECT_EQ(agent.nextMessage(), pingReply(7));
}

TEST_F(Framing, waitsForTheRestOfALine) {
    AgentProcess& agent = start();
    agent.send(R"({"command":"ping",)");
    agent.waitUntilIdle();
    agent.send(R"("request_id":7})");
    agent.waitUntilIdle();
    EXPECT_EQ(agent.unreadOutputBytes(), 0);
    agent.send("\n" + pingLine(8));
    EXPECT_EQ(agent.nextMessage(), pingReply(7));
    EXPECT_EQ(agent.nextMessage(), pingReply(8));
}

TEST_F(Framing, answersManyShortLinesInOneWriteInTheirOrder) {
    constexpr std::uint64_t count = 20'000;
    std::string lines;
    for (std::uint64_t requestID = 0; requestID < count; ++requestID)
        lines += pingLine(requestID);
    AgentProcess& agent = launch(options());
    agent.send(lines);
    for (std::uint64_t requestID = 0; requestID < count; ++requestID)
        ASSERT_EQ(agent.nextMessage(), pingReply(requestID));
}

TEST_F(Framing, answersManyLongLinesInOneWriteInTheirOrder) {
    constexpr std::uint64_t count = 500;
    std::string lines;
    for (std::uint64_t requestID = 0; requestID < count; ++requestID)
        lines += longPing(requestID, 70'000 + requestID);
    AgentProcess& agent = launch(options());
    agent.send(lines);
    for (std::uint64_t requestID = 0; requestID < count; ++requestID)
        ASSERT_EQ(agent.nextMessage(), pingReply(requestID));
}

TEST_F(Framing, answersLongAndShortLinesInTurn) {
    AgentProcess& agent = launch(options());
    std::string lines;
    std::uint64_t sent = 0;
    // Lengths around the powers of two, where a buffer may end.
    for (std::size_t power = 1024; power <= 1'048'576; power *= 2) {
        for (const std::size_t length : {power - 1, power, power + 1}) {
            lines += longPing(sent++, length);
            lines += pingLine(sent++);
        }
    }
    agent.send(lines);
    for (std::uint64_t requestID = 0; requestID < sent; ++requestID)
        ASSERT_EQ(agent.nextMessage(), pingReply(requestID));
}

TEST_F(Framing, readsALineOfSeveralMegabytes) {
    AgentProcess& agent = start();
    agent.send(longPing(7, 6'000'000) + pingLine(8));
    EXPECT_EQ(agent.nextMessage(), pingReply(7));
    EXPECT_EQ(agent.nextMessage(), pingReply(8));
}

TEST_F(Framing, readsALineOf90Megabytes) {
    AgentProcess& agent = start();
    agent.send(longPing(7, 90'000'000));
    EXPECT_EQ(agent.nextMessage(), pingReply(7));
    expectSilence(agent);
}

TEST_F(Framing, dropsALineOfSeveralMegabytesWithoutATrace) {
    AgentProcess& agent = start();
    agent.send(repeated("x", 6'000'000) + "\n" + pingLine(7) + repeated("{", 6'000'000) + "\n" + pingLine(8));
    EXPECT_EQ(agent.nextMessage(), pingReply(7));
    EXPECT_EQ(agent.nextMessage(), pingReply(8));
}

TEST_F(Framing, answersTheSameIdentifierEachTime) {
    AgentProcess& agent = start();
    agent.send(pingLine(7) + pingLine(7));
    EXPECT_EQ(agent.nextMessage(), pingReply(7));
    EXPECT_EQ(agent.nextMessage(), pingReply(7));
    expectSilence(agent);
}

TEST_F(Framing, readsAnInputInNonBlockingMode) {
    AgentProcess::Options nonBlocking = options();
    nonBlocking.nonBlockingPipes = true;
    AgentProcess& agent = start(nonBlocking);
    agent.sendByteByByte(pingLine(7));
    EXPECT_EQ(agent.nextMessage(), pingReply(7));
    agent.send(longPing(8, 6'000'000));
    EXPECT_EQ(agent.nextMessage(), pingReply(8));
    agent.closeInput();
    EXPECT_EQ(agent.waitForExit(), 0);
}

} // namespace

} // namespace tavel
