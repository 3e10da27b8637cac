#include "Tests/X11/Focus/AccessibleProgram.h"
#include "Tests/X11/Focus/FocusDesktop.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <thread>

namespace tavel {

namespace {

constexpr std::uint32_t iconRole = 26;
constexpr std::uint32_t viewRole = 30;
constexpr std::uint32_t textRole = 61;

const std::int32_t thisProcess = getpid();

/// A program that is followed, with a view, an icon in it and a text.
class FocusedRole : public testing::Test {
protected:
    FocusedRole() : program(desktop.startBuses()) {
        program.set("/view", {viewRole, {}, {}});
        program.set("/icon", {iconRole, {}, {}});
        program.set("/text", {textRole, {}, {}});
        desktop.probe().follow(true);
    }

    /// As it is asked while a key waits.
    std::optional<std::string> role() {
        const DecisionDeadline::Scope scope(desktop.deadline(), DecisionDeadline::Clock::time_point::max());
        return desktop.probe().focusedRole(thisProcess);
    }
    void await(const std::optional<std::string>& expected) { desktop.awaitRole(thisProcess, expected); }

    /// Of as many questions as it takes: a busy machine may take longer than anybody waits in front of a
    /// keyboard.
    std::optional<std::string> firstAnswer() {
        std::optional<std::string> answer;
        waitUntil([&] { return (answer = role()).has_value(); }, inTime);
        return answer;
    }

    FocusDesktop desktop;
    AccessibleProgram program;
};

TEST_F(FocusedRole, isNothingBeforeAProgramHasTold) {
    EXPECT_TRUE(desktop.probe().isTrusted());
    EXPECT_EQ(role(), std::nullopt);
}

TEST_F(FocusedRole, isThatOfTheElementThatGainedTheFocus) {
    program.gain("/view");
    await("AXLayoutArea");
    program.gain("/text");
    await("AXTextField");
    program.lose("/text");
    await(std::nullopt);
}

TEST_F(FocusedRole, isKnownWithoutTheMainLoop) {
    program.gain("/view");
    waitUntil([&] { return role() == "AXLayoutArea"; }, inTime); // in which nothing runs it
}

TEST_F(FocusedRole, isNotLostWithAnElementThatHasItNoMore) {
    program.gain("/view");
    program.gain("/text");
    program.lose("/view");
    await("AXTextField");
    EXPECT_EQ(firstAnswer(), "AXTextField");
}

TEST_F(FocusedRole, isNothingForAProcessThatHasNotTheFocus) {
    program.gain("/view");
    await("AXLayoutArea");
    EXPECT_EQ(desktop.probe().focusedRole(desktop.buses().registry()), std::nullopt);
    EXPECT_EQ(desktop.probe().focusedRole(0), std::nullopt);
    await("AXLayoutArea");
}

TEST_F(FocusedRole, isThatOfTheTextInWhichOneTypesWhileAnItemIsMarked) {
    program.gain("/view");
    program.gain("/icon");
    await("AXImage");
    program.gain("/text");
    await("AXTextField");
    program.gain("/icon"); // found by what is being typed
    const int before = program.roleQuestions();
    EXPECT_EQ(firstAnswer(), "AXTextField");
    EXPECT_GT(program.roleQuestions(), before + 1); // the icon's as well
    program.lose("/text");
    await("AXImage");
}

TEST_F(FocusedRole, isNothingIfItCannotBeToldWhetherOneTypes) {
    program.gain("/text");
    await("AXTextField");
    program.beforeRole([](const std::string& path) { return path != "/text"; });
    program.gain("/icon");
    const int before = program.roleQuestions();
    waitUntil(
        [&] {
            EXPECT_EQ(role(), std::nullopt);
            return program.roleQuestions() > before + 2; // those of the icon as well
        },
        inTime);
    program.lose("/text");
    await("AXImage");
}

TEST_F(FocusedRole, isThatOfTheElementToWhichTheFocusMovesBeforeTheAnswer) {
    program.gain("/view");
    await("AXLayoutArea");
    program.beforeRole([&](const std::string& path) {
        if (path == "/view")
            program.gain("/text");
        return true;
    });
    EXPECT_EQ(firstAnswer(), "AXTextField");
}

TEST_F(FocusedRole, isNothingIfTheFocusGoesBeforeTheAnswer) {
    program.gain("/view");
    await("AXLayoutArea");
    program.beforeRole([&](const std::string&) {
        program.lose("/view");
        return true;
    });
    EXPECT_EQ(role(), std::nullopt);
}

TEST_F(FocusedRole, isNothingIfTheFocusNeverStandsStill) {
    program.gain("/view");
    await("AXLayoutArea");
    program.beforeRole([&](const std::string& path) {
        program.gain(path == "/view" ? "/text" : "/view");
        return true;
    });
    const int before = program.roleQuestions();
    EXPECT_EQ(role(), std::nullopt);
    EXPECT_LE(program.roleQuestions(), before + 3);
}

TEST_F(FocusedRole, isNothingWithoutAnAnswer) {
    program.gain("/view");
    await("AXLayoutArea");
    program.beforeRole([](const std::string&) { return false; });
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(role(), std::nullopt);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
    program.beforeRole({});
    await("AXLayoutArea");
}

TEST_F(FocusedRole, isWaitedForLongerWhileNoKeyWaits) {
    program.gain("/view");
    await("AXLayoutArea");
    program.beforeRole([](const std::string&) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100)); // deliberate: a busy program
        return true;
    });
    EXPECT_EQ(role(), std::nullopt);
    // On a busy machine not at the first time.
    waitUntil([&] { return desktop.probe().focusedRole(thisProcess) == "AXLayoutArea"; }, inTime);
}

TEST_F(FocusedRole, isNotAskedForWhenTheDecisionHasToBeMade) {
    program.gain("/view");
    await("AXLayoutArea");
    const int before = program.roleQuestions();
    {
        const DecisionDeadline::Scope scope(desktop.deadline(), DecisionDeadline::Clock::now());
        EXPECT_EQ(desktop.probe().focusedRole(thisProcess), std::nullopt);
    }
    EXPECT_EQ(program.roleQuestions(), before);
    await("AXLayoutArea");
}

TEST_F(FocusedRole, isNothingForAnElementThatIsGone) {
    program.gain("/gone");
    program.gain("/nowhere");
    const int before = program.roleQuestions();
    waitUntil([&] { return role() == std::nullopt && program.roleQuestions() > before; }, inTime);
}

TEST_F(FocusedRole, isNothingOnceTheProgramHasVanished) {
    program.gain("/view");
    await("AXLayoutArea");
    program.vanish();
    await(std::nullopt);
    EXPECT_TRUE(desktop.probe().isTrusted());
}

TEST_F(FocusedRole, ofAnotherConnectionIsKnownAsWell) {
    AccessibleProgram other(desktop.buses());
    other.set("/view", {textRole, {}, {}});
    program.gain("/view");
    await("AXLayoutArea");
    other.gain("/view");
    await("AXTextField");
    program.lose("/view");
    program.gain("/icon");
    await("AXImage");
}

TEST_F(FocusedRole, isUntouchedByNewsThatNoToolkitSends) {
    program.gain("/view");
    await("AXLayoutArea");
    program.tell("/text", nullptr);
    program.tell("/text", g_variant_new("(s)", "focused"));
    program.tell("/text", g_variant_new("(ssiv)", "focused", "1", 0, g_variant_new_int32(0)));
    program.tell("/text", g_variant_new("(uiiv)", 1U, 1, 0, g_variant_new_int32(0)));
    program.tell("/text", g_variant_new("(siiv)", "selected", 1, 0, g_variant_new_int32(0)));
    program.tell("/text", g_variant_new("(siiv)", "Focused", 1, 0, g_variant_new_int32(0)));
    EXPECT_EQ(firstAnswer(), "AXLayoutArea"); // the answer came behind them all
}

TEST_F(FocusedRole, isTakenFromOldAndNewNews) {
    program.tell("/view",
                 g_variant_new("(siiv(so))", "focused", 1, 0, g_variant_new_int32(0), ":1.1", "/root"));
    await("AXLayoutArea");
    program.tell("/text", g_variant_new("(siiva{sv})", "focused", 1, 0, g_variant_new_int32(0), nullptr));
    await("AXTextField");
}

} // namespace

} // namespace tavel
