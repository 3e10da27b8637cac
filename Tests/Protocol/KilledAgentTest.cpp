#include "Support/Base64.h"
#include "Tests/Protocol/AgentTest.h"

#include <csignal>
#include <string>

namespace tavel {

namespace {

constexpr int rounds = 12;
constexpr std::size_t textBytes = std::size_t{1} << 20;

/// Two agents and a writer on one pasteboard.
class KilledAgent : public AgentTest {
protected:
    /// A text that shows whether it is complete: one letter, repeated.
    static std::string textOfRound(int round) { return repeated(std::string(1, letter(round)), textBytes); }

    static Json writeText(int round) {
        std::string encoded;
        appendBase64(encoded, textOfRound(round));
        return {{"command", "write_text"}, {"request_id", round}, {"text_b64", encoded}, {"marker", "m"}};
    }

    /// Starts an agent, sends it several texts to write, and kills it at a moment that varies with the round.
    void killWhileWriting(int round) {
        AgentProcess agent(options());
        const std::string line = writeText(round).dump() + "\n";
        agent.send(line);
        EXPECT_EQ(agent.nextMessage().at("ok"), true);
        for (int write = 0; write < 4; ++write)
            agent.send(line);
        // After none to three replies to the four writes, the next write is in progress.
        for (int reply = 0; reply < round % 4; ++reply)
            EXPECT_EQ(agent.nextMessage().at("ok"), true);
        agent.signal(SIGKILL);
        EXPECT_EQ(agent.waitForExit(), SIGKILL);
    }

    /// Reads the agent's messages up to the text of that sequence. Expects every text to be complete.
    static void expectText(AgentProcess& agent, std::string_view text, std::int64_t sequence) {
        for (;;) {
            const Json message = agent.nextMessage();
            ASSERT_EQ(message.at("event"), "change");
            if (!message.contains("text_b64"))
                continue;
            if (message.at("sequence") == sequence) {
                EXPECT_EQ(message.at("bytes"), text.size());
                return;
            }
            // A poll may announce one content and then read the next.
            EXPECT_THAT(message.at("bytes").get<std::size_t>(), testing::AnyOf(textBytes, text.size()));
        }
    }

private:
    static char letter(int round) { return static_cast<char>('a' + round); }
};

TEST_F(KilledAgent, leavesTheOtherAgentAndTheWriterAtWork) {
    AgentProcess& survivor = start();
    for (int round = 0; round < rounds; ++round) {
        const std::int64_t countBefore = otherApplication().changeCount();
        killWhileWriting(round);

        EXPECT_EQ(otherApplication().text(), textOfRound(round));
        EXPECT_GT(otherApplication().changeCount(), countBefore);

        const std::string copied = "copied in round " + std::to_string(round);
        const std::int64_t sequence = otherApplication().copyText(copied);
        expectText(survivor, copied, sequence);

        survivor.send(writeText(round).dump() + "\n");
        EXPECT_EQ(survivor.nextMessage(),
                  (Json{{"request_id", round}, {"ok", true}, {"reason", ""}, {"sequence", sequence + 1}}));
    }
}

} // namespace

} // namespace tavel
