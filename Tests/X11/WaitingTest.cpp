#include "Tests/Support/WaitUntil.h"
#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/X11AgentTest.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <string>
#include <thread>

namespace tavel {

namespace {

/// Where the owner of a text keeps the agent waiting.
enum class Stage {
    targets, // it says nothing
    text,    // it says what it offers
    drip,    // it sends small increments without an end, fast enough not to be given up
    halfWay, // it has sent a part of the text
};

std::string stageName(const testing::TestParamInfo<Stage>& info) {
    constexpr const char* names[] = {"targets", "text", "drip", "halfWay"};
    return names[static_cast<int>(info.param)];
}

/// The owner goes on only after the test has read a reply. An agent that waits for its owner would send
/// before the reply what it makes of the content, or would give the owner up.
class OwnerThatKeepsWaiting : public X11AgentTest, public testing::WithParamInterface<Stage> {
protected:
    OwnerThatKeepsWaiting() {
        if (GetParam() == Stage::targets)
            owner_.on("TARGETS", owner_.silence());
        else
            owner_.offer({"UTF8_STRING"});
        if (GetParam() == Stage::drip)
            owner_.on("UTF8_STRING", [this](const auto& request) { drip(request); });
        else if (GetParam() == Stage::halfWay)
            owner_.on("UTF8_STRING", [this](const auto& request) { sendHalf(request); });
        else
            owner_.on("UTF8_STRING", owner_.silence());
    }

    ~OwnerThatKeepsWaiting() override { goesOn_ = false; }

    /// The agent has begun to read the owner's content, and has announced it if it knows the targets.
    void copy() {
        agent();
        owner_.take();
        static_cast<void>(owner_.awaitRequest(heldTarget()));
        if (GetParam() == Stage::targets)
            return;
        EXPECT_EQ(agent().nextMessage(), announcement(1));
        if (GetParam() != Stage::text)
            waitUntil([this] { return isUnderWay_.load(); }, AgentProcess::deadline);
    }

    /// The owner sends what it has kept back, and the agent has taken it in.
    void finish() {
        goesOn_ = false;
        const auto request = owner_.awaitRequest(heldTarget());
        if (GetParam() == Stage::targets) {
            owner_.on("UTF8_STRING", owner_.value("UTF8_STRING", "text"));
            owner_.atoms("ATOM", {owner_.atom("UTF8_STRING")})(request);
        } else if (GetParam() == Stage::text) {
            owner_.value("UTF8_STRING", "text")(request);
        } else if (GetParam() == Stage::drip) {
            waitUntil([this] { return hasEndedDrip_.load(); }, AgentProcess::deadline);
        } else {
            EXPECT_TRUE(owner_.sendIncrements(request, "UTF8_STRING", {"xt"}));
        }
        EXPECT_TRUE(owner_.awaitDeletion(request));
    }

private:
    std::string heldTarget() const { return GetParam() == Stage::targets ? "TARGETS" : "UTF8_STRING"; }

    void sendHalf(const ScriptedOwner::Request& request) {
        owner_.announce(request, 4);
        owner_.awaitDeletion(request);
        owner_.put(request, "UTF8_STRING", "te");
        isUnderWay_ = true;
    }

    void drip(const ScriptedOwner::Request& request) {
        owner_.announce(request, 4);
        while (goesOn_ && owner_.awaitDeletion(request)) {
            owner_.put(request, "UTF8_STRING", std::string(1024, ' '));
            isUnderWay_ = true;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        owner_.sendIncrements(request, "UTF8_STRING", {"text"});
        hasEndedDrip_ = true;
    }

    std::atomic<bool> goesOn_ = true;
    std::atomic<bool> isUnderWay_ = false;
    std::atomic<bool> hasEndedDrip_ = false;

protected:
    ScriptedOwner owner_{server_.display()}; // its thread uses the others
};

TEST_P(OwnerThatKeepsWaiting, keepsNoPingWaitingAndIsReportedWhenItGoesOn) {
    copy();
    EXPECT_EQ(request(agent(), {{"command", "ping"}}), success(1));
    finish();
    if (GetParam() == Stage::targets) {
        EXPECT_EQ(agent().nextMessage(), announcement(1));
    }
    const Json text = agent().nextMessage();
    EXPECT_TRUE(text.contains("text_b64")) << text;
    EXPECT_EQ(text.value("sequence", 0), 1);
}

TEST_P(OwnerThatKeepsWaiting, isNotReportedOnceTheParentHasWrittenItsText) {
    copy();
    EXPECT_EQ(request(agent(), {{"command", "write_text"}, {"text_b64", "aGk"}, {"marker", ""}}), success(2));
    EXPECT_EQ(pasteWithXclip(), "hi");
    finish();
    expectSilence(agent());
}

TEST_P(OwnerThatKeepsWaiting, letsFilesBeWrittenIfItsOwnContentWasExpected) {
    copy();
    Json command{{"command", "write_files"},
                 {"kind", "files"},
                 {"paths", {world_.write("file", "")}},
                 {"marker", ""},
                 {"expected_sequence", 0}};
    EXPECT_EQ(request(agent(), command), failure("Le presse-papiers local a changé pendant le transfert", 1));
    command["expected_sequence"] = 1;
    EXPECT_EQ(request(agent(), command), success(2));
    finish();
    expectSilence(agent());
}

TEST_P(OwnerThatKeepsWaiting, isForgottenWhenItsContentIsDiscarded) {
    copy();
    EXPECT_EQ(request(agent(), {{"command", "discard_pending"}}), success(1));
    finish();
    expectSilence(agent());
}

TEST_P(OwnerThatKeepsWaiting, isNotReportedOnceANewerContentIsThere) {
    copy();
    ScriptedOwner next(server_.display());
    next.offerValue("UTF8_STRING", "next");
    next.take();
    EXPECT_EQ(agent().nextMessage(), announcement(2));
    EXPECT_EQ(agent().nextMessage(), textEvent("bmV4dA", 4, 2));
    finish();
    expectSilence(agent());
}

INSTANTIATE_TEST_SUITE_P(Stages, OwnerThatKeepsWaiting,
                         testing::Values(Stage::targets, Stage::text, Stage::drip, Stage::halfWay),
                         stageName);

/// At these stages the agent would show, or would not end at all, if it waited until it gives the owner up.
class OwnerThatNeverEnds : public OwnerThatKeepsWaiting {};

TEST_P(OwnerThatNeverEnds, doesNotKeepTheAgentFromQuitting) {
    copy();
    EXPECT_EQ(request(agent(), {{"command", "quit"}}), success(1));
    EXPECT_EQ(agent().nextLine(), std::nullopt);
    EXPECT_EQ(agent().waitForExit(), 0);
}

INSTANTIATE_TEST_SUITE_P(Stages, OwnerThatNeverEnds, testing::Values(Stage::targets, Stage::drip), stageName);

/// An X server that takes connections and requests, and answers nothing.
class HungServer : public X11AgentTest {
protected:
    /// The agent owns a content then, which it would hand over at its end.
    void hang() {
        EXPECT_EQ(request(agent(), {{"command", "write_text"}, {"text_b64", "aGk"}, {"marker", ""}}),
                  success(1));
        kill(server_.processIdentifier(), SIGSTOP);
    }

    ~HungServer() override { kill(server_.processIdentifier(), SIGCONT); }
};

TEST_F(HungServer, doesNotKeepTheAgentFromQuitting) {
    hang();
    EXPECT_EQ(request(agent(), {{"command", "quit"}}), success(1));
    EXPECT_EQ(agent().waitForExit(), 0);
    EXPECT_TRUE(exportDirectories().empty());
}

TEST_F(HungServer, doesNotKeepTheAgentFromEndingWithItsInput) {
    hang();
    agent().closeInput();
    EXPECT_EQ(agent().waitForExit(), 0);
    EXPECT_TRUE(exportDirectories().empty());
}

TEST_F(HungServer, thatHoldsUpACommandDoesNotKeepTheAgentFromQuitting) {
    hang();
    agent().send(pingLine(1));
    agent().send("{\"command\":\"quit\",\"request_id\":2}\n");
    EXPECT_EQ(agent().nextMessage(), pingReply(1, 1));
    EXPECT_EQ(agent().nextMessage(), pingReply(2, 1));
    EXPECT_EQ(agent().waitForExit(), 0);
}

} // namespace

} // namespace tavel
