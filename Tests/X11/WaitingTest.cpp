#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/X11AgentTest.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <string>
#include <string_view>
#include <thread>

namespace tavel {

namespace {

/// Where the owner of a text keeps the agent waiting.
enum class Stage {
    targets, // it says nothing
    text,    // it says what it offers
    drip,    // it sends the text in small increments, fast enough not to be given up, and without an end
    halfWay, // it has sent a part of the text
};

std::string nameOf(const testing::TestParamInfo<Stage>& info) {
    constexpr const char* names[] = {"targets", "text", "drip", "halfWay"};
    return names[static_cast<int>(info.param)];
}

/// Each reply is read before the owner goes on. So an agent that waits for its owner sends what it makes of
/// the content before the reply, or never replies.
class OwnerThatKeepsWaiting : public X11AgentTest, public testing::WithParamInterface<Stage> {
protected:
    OwnerThatKeepsWaiting() {
        const auto hold = [this](const auto& request) { held_ = request; };
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

    /// Has the agent begin to read. It has announced the content then, if it can.
    void copy() {
        agent();
        owner_.take();
        static_cast<void>(owner_.awaitRequest(heldTarget()));
        if (GetParam() != Stage::targets) {
            EXPECT_EQ(agent().nextMessage(), announcement(1));
        }
    }

    /// The owner sends what it has kept back, and the agent has taken it in.
    void finish() {
        goesOn_ = false;
        const auto request = owner_.awaitRequest(heldTarget());
        switch (GetParam()) {
        case Stage::targets:
            owner_.on("UTF8_STRING", owner_.value("UTF8_STRING", "text"));
            owner_.atoms("ATOM", {owner_.atom("UTF8_STRING")})(request);
            break;
        case Stage::text:
            owner_.value("UTF8_STRING", "text")(request);
            break;
        case Stage::drip:
            break; // on the owner's thread
        case Stage::halfWay:
            EXPECT_TRUE(owner_.sendIncrements(request, "UTF8_STRING", {"xt"}));
            break;
        }
        EXPECT_TRUE(owner_.awaitDeletion(request));
        waitUntil([this] { return GetParam() != Stage::drip || hasEndedDrip_; }, AgentProcess::deadline);
    }

    ScriptedOwner owner_{server_.display()};

private:
    std::string heldTarget() const { return GetParam() == Stage::targets ? "TARGETS" : "UTF8_STRING"; }

    void sendHalf(const ScriptedOwner::Request& request) {
        owner_.announce(request, 4);
        owner_.awaitDeletion(request);
        owner_.put(request, "UTF8_STRING", "te");
    }

    void drip(const ScriptedOwner::Request& request) {
        owner_.announce(request, 4);
        while (goesOn_ && owner_.awaitDeletion(request)) {
            owner_.put(request, "UTF8_STRING", std::string(1024, ' '));
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        owner_.sendIncrements(request, "UTF8_STRING", {"text"});
        hasEndedDrip_ = true;
    }

    std::atomic<bool> goesOn_ = true;
    std::atomic<bool> hasEndedDrip_ = false;
};
