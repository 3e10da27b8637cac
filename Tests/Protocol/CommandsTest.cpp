#include "Tests/Protocol/AgentTest.h"

namespace tavel {

namespace {

class Commands : public AgentTest {
protected:
    static Json discardPending() { return {{"command", "discard_pending"}}; }
};

TEST_F(Commands, pingTellsTheChangeCount) {
    otherApplication().copyText("a");
    AgentProcess& agent = launch(options());
    EXPECT_EQ(request(agent, {{"command", "ping"}}), success(1));
    const std::int64_t sequence = otherApplication().copyText("b");
    nextMessages(agent, 2);
    EXPECT_EQ(request(agent, {{"command", "ping"}}), success(sequence));
}

TEST_F(Commands, pingIgnoresOtherFields) {
    AgentProcess& agent = start();
    EXPECT_EQ(
        request(agent, {{"command", "ping"}, {"expected_sequence", 99}, {"text_b64", 7}, {"paths", "x"}}),
        success(0));
}

TEST_F(Commands, unknownOnesAreRefused) {
    AgentProcess& agent = start();
    EXPECT_EQ(request(agent, {{"command", "nonsense"}}), failure("Commande clipboard inconnue", 0));
    EXPECT_EQ(request(agent, {{"command", ""}}), failure("Commande clipboard inconnue", 0));
    EXPECT_EQ(request(agent, {{"command", repeated("x", 100'000)}}),
              failure("Commande clipboard inconnue", 0));
    expectSilence(agent);
}

TEST_F(Commands, discardPendingSilencesACopyThatWasNotPolled) {
    // An event that does not fit into the pipe blocks the agent within a poll, so that it gets the command
    // before its next poll.
    AgentProcess::Options narrow = options();
    narrow.outputPipeBytes = 4096;
    AgentProcess& agent = start(narrow);
    const std::int64_t first = otherApplication().copyText(repeated("abc", 50'000));
    waitUntilStalled(agent);
    const std::int64_t discarded = otherApplication().copyText("secret");
    agent.send(R"({"command":"discard_pending","request_id":7})"
               "\n");
    agent.waitUntilIdle();

    EXPECT_EQ(agent.nextMessage(), announcement(first));
    EXPECT_EQ(agent.nextMessage(), textEvent(repeated("YWJj", 50'000), 150'000, first));
    EXPECT_EQ(agent.nextMessage(), pingReply(7, discarded));
    waitForPolls();
    const std::int64_t later = otherApplication().copyText("hi");
    EXPECT_EQ(agent.nextMessage(), announcement(later));
    EXPECT_EQ(agent.nextMessage(), textEvent("aGk", 2, later));
}

TEST_F(Commands, discardPendingSucceedsWhenNothingIsPending) {
    AgentProcess& agent = start();
    EXPECT_EQ(request(agent, discardPending()), success(0));
    EXPECT_EQ(request(agent, discardPending()), success(0));
    waitForPolls();
    const std::int64_t sequence = otherApplication().copyText("hi");
    EXPECT_EQ(agent.nextMessage(), announcement(sequence));
    EXPECT_EQ(agent.nextMessage(), textEvent("aGk", 2, sequence));
    EXPECT_EQ(request(agent, discardPending()), success(sequence));
    waitForPolls();
    expectSilence(agent);
}

/// On a machine without a display.
class FilePrompt : public AgentTest {
protected:
    void expectReplies(const std::vector<std::string>& values, const Json& expected) {
        AgentProcess& agent = start();
        for (const std::string& value : values) {
            SCOPED_TRACE(value);
            agent.send(R"({"command":"configure_file_prompt","request_id":7)" + value + "}\n");
            Json reply = agent.nextMessage();
            reply.erase("request_id");
            EXPECT_EQ(reply, expected);
        }
        expectSilence(agent);
    }
};

TEST_F(FilePrompt, cannotBeSwitchedOn) {
    expectReplies({R"(,"rename_prompt":true)", R"(,"rename_prompt":true)", R"(,"rename_prompt":1)",
                   R"(,"rename_prompt":1.0)", R"(,"rename_prompt":10e-1)",
                   R"(,"rename_prompt":false,"rename_prompt":true)"},
                  failure("Renommage : autorise Tavel Bridge dans Accessibilit\u00E9 et Surveillance de "
                          "l\u2019entr\u00E9e, puis r\u00E9active l\u2019option.",
                          0));
}

TEST_F(FilePrompt, canBeSwitchedOff) {
    expectReplies({R"(,"rename_prompt":false)", R"(,"rename_prompt":0)", R"(,"rename_prompt":0.0)",
                   R"(,"rename_prompt":-0)", R"(,"rename_prompt":0e5)",
                   R"(,"rename_prompt":true,"rename_prompt":0)"},
                  success(0));
}

TEST_F(FilePrompt, isSwitchedOffByAnythingButATruthValue) {
    expectReplies({"", R"(,"rename_prompt":null)", R"(,"rename_prompt":"true")", R"(,"rename_prompt":"1")",
                   R"(,"rename_prompt":2)", R"(,"rename_prompt":-1)", R"(,"rename_prompt":0.5)",
                   R"(,"rename_prompt":1.5)", R"(,"rename_prompt":18446744073709551617)",
                   R"(,"rename_prompt":[true])", R"(,"rename_prompt":{})", R"(,"Rename_Prompt":true)",
                   R"(,"rename_prompt":true,"rename_prompt":"true")"},
                  success(0));
}

TEST_F(FilePrompt, canBeTriedAgain) {
    AgentProcess& agent = start();
    const Json switchOn{{"command", "configure_file_prompt"}, {"rename_prompt", true}};
    const Json switchOff{{"command", "configure_file_prompt"}, {"rename_prompt", false}};
    for (int attempt = 0; attempt < 3; ++attempt) {
        EXPECT_EQ(request(agent, switchOn).value("ok", true), false);
        EXPECT_EQ(request(agent, switchOff), success(0));
    }
}

} // namespace

} // namespace tavel
