#include "Tests/X11/Focus/AccessibleProgram.h"
#include "Tests/X11/Focus/FocusDesktop.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <thread>

namespace tavel {

namespace {

constexpr unsigned int active = 1;
constexpr unsigned int focused = 12;

const std::int32_t thisProcess = getpid();

/// A file manager in front that had the focus before anybody asked for news.
class FocusSearch : public testing::Test {
protected:
    FocusSearch() : program(desktop.startBuses()) {
        program.set("/root", {75, {}, {"/behind", "/window"}});
        program.set("/behind", {23, {}, {"/text"}});
        program.set("/window", {23, {active}, {"/box"}});
        program.set("/box", {39, {}, {"/button", "/view"}});
        program.set("/button", {43, {}, {}});
        program.set("/view", {30, {focused}, {}});
        program.set("/icon", {26, {focused}, {}});
        program.set("/text", {61, {focused}, {}});
        program.announce("/root");
        window = desktop.createWindow(thisProcess, "Thunar");
        desktop.setActiveWindow(window);
    }

    /// As it is asked while a key waits.
    std::optional<std::string> role() {
        const DecisionDeadline::Scope scope(desktop.deadline(), DecisionDeadline::Clock::time_point::max());
        return desktop.probe().focusedRole(thisProcess);
    }

    /// Begins to follow until the first question is answered so: a busy machine may take longer than anybody
    /// waits in front of a keyboard.
    void expectFound(const std::string& expected) {
        waitUntil(
            [&] {
                desktop.probe().follow(false);
                desktop.probe().follow(true);
                return role() == expected;
            },
            inTime);
    }

    FocusDesktop desktop;
    AccessibleProgram program;
    xcb_window_t window = 0;
};

TEST_F(FocusSearch, findsWhatTheToolkitLists) {
    program.setMatches({"/view"});
    expectFound("AXLayoutArea");
}

TEST_F(FocusSearch, takesAViewRatherThanItsItem) {
    program.setMatches({"/icon", "/view"});
    expectFound("AXLayoutArea");
}

TEST_F(FocusSearch, takesATextRatherThanAnItem) {
    program.setMatches({"/icon", "/text"});
    expectFound("AXTextField");
}

TEST_F(FocusSearch, takesNoItemAloneForThePlaceOfTheFocus) {
    program.setMatches({"/icon"});
    desktop.probe().follow(true);
    EXPECT_TRUE(desktop.probe().isTrusted());
    EXPECT_EQ(role(), std::nullopt);
}

TEST_F(FocusSearch, walksThroughTheActiveWindowOfAToolkitThatHasNoList) {
    expectFound("AXLayoutArea");
}

TEST_F(FocusSearch, walksThroughAllWindowsIfNoneIsActive) {
    program.set("/window", {23, {}, {"/box"}});
    program.set("/behind", {23, {}, {}});
    expectFound("AXLayoutArea");
}

TEST_F(FocusSearch, findsWhatTheToolkitHasCachedWithoutAWalk) {
    program.set("/box", {39, {}, {"/box", "/box"}}); // in which no walk ends
    program.setCached({"/root", "/window", "/box", "/view", "/button"});
    expectFound("AXLayoutArea");
}

TEST_F(FocusSearch, takesAnItemThatAloneIsFocusedOfWhatIsCached) {
    program.set("/box", {39, {}, {"/box", "/box"}});
    program.setCached({"/root", "/window", "/box", "/icon"});
    expectFound("AXImage");
}

TEST_F(FocusSearch, walksIfMoreThanOneThatIsCachedIsFocused) {
    program.setCached({"/root", "/text", "/view"});
    expectFound("AXLayoutArea");
}

TEST_F(FocusSearch, walksIfNothingThatIsCachedIsFocused) {
    program.setCached({"/root", "/window", "/button"});
    expectFound("AXLayoutArea");
}

TEST_F(FocusSearch, takesWhatTheToolkitListsRatherThanWhatIsCached) {
    program.setMatches({"/icon", "/text"});
    program.setCached({"/icon"});
    expectFound("AXTextField");
}

TEST_F(FocusSearch, goesOnInTheBackgroundIfTheProgramIsBusyWhenFollowingBegins) {
    program.setMatches({"/icon", "/view"});
    // More than once, as the search ends after a second, in which a busy machine may not come to this.
    waitUntil(
        [&] {
            desktop.probe().follow(false);
            program.setBusy(true);
            desktop.probe().follow(true);
            program.setBusy(false);
            // Not by asking for the role, which has it looked for as well.
            for (int count = 0; count < 100 && program.roleQuestions() == 0; ++count)
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            return program.roleQuestions() > 0;
        },
        inTime);
    desktop.awaitRole(thisProcess, "AXLayoutArea");
}

TEST_F(FocusSearch, endsInATreeWithoutAnEnd) {
    program.set("/box", {39, {}, {"/window", "/box", "/box"}});
    const auto begin = std::chrono::steady_clock::now();
    desktop.probe().follow(true);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
    EXPECT_EQ(role(), std::nullopt);
}

TEST_F(FocusSearch, endsWhenTheProgramIsSilent) {
    program.setSilent(true);
    const auto begin = std::chrono::steady_clock::now();
    desktop.probe().follow(true);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
    EXPECT_TRUE(desktop.probe().isTrusted());
    program.setSilent(false);
    desktop.awaitRole(thisProcess, "AXLayoutArea"); // asking has it looked for
}

TEST_F(FocusSearch, leavesOtherProgramsThanFileManagersAlone) {
    desktop.setActiveWindow(desktop.createWindow(thisProcess, "Gimp"));
    program.setMatches({"/view"});
    desktop.probe().follow(true);
    EXPECT_EQ(role(), std::nullopt);
}

TEST_F(FocusSearch, looksOnlyIntoTheProgramInFront) {
    desktop.setActiveWindow(desktop.createWindow(desktop.buses().registry(), "Thunar"));
    program.setMatches({"/view"});
    desktop.probe().follow(true);
    EXPECT_EQ(role(), std::nullopt);
}

TEST_F(FocusSearch, happensWhenTheFocusIsLostAndNobodyTellsWhoHasIt) {
    expectFound("AXLayoutArea");
    program.set("/view", {30, {}, {}});
    program.set("/button", {61, {focused}, {}});
    program.lose("/view");
    // Not by asking for the role, which has it looked for as well.
    const int before = program.roleQuestions();
    program.setMatches({"/icon", "/button"});
    runUntil([&] { return program.roleQuestions() > before; });
    desktop.awaitRole(thisProcess, "AXTextField");
}

TEST_F(FocusSearch, happensWhenAFileManagerBecomesActiveAndTellsNoFocus) {
    desktop.setActiveWindow(0);
    desktop.probe().follow(true);
    desktop.setActiveWindow(window);
    program.setMatches({"/icon", "/view"});
    program.activate("/window");
    runUntil([&] { return program.roleQuestions() > 0; });
    desktop.awaitRole(thisProcess, "AXLayoutArea");
}

TEST_F(FocusSearch, happensAtOnceWhenNoKeyWaits) {
    desktop.setActiveWindow(0);
    desktop.probe().follow(true);
    desktop.setActiveWindow(window);
    program.setMatches({"/icon", "/view"});
    EXPECT_EQ(role(), std::nullopt);
    // On a busy machine not at the first time.
    waitUntil([&] { return desktop.probe().focusedRole(thisProcess) == "AXLayoutArea"; }, inTime);
}

TEST_F(FocusSearch, isNotNeededOfAProgramThatHasTold) {
    desktop.setActiveWindow(0);
    desktop.probe().follow(true);
    desktop.setActiveWindow(window);
    program.setMatches({"/icon", "/view"});
    program.gain("/text");
    program.activate("/window");
    desktop.awaitRole(thisProcess, "AXTextField");
    bool hasPassed = false; // more time than the search would have waited
    g_timeout_add(
        1000,
        [](gpointer flag) -> gboolean {
            *static_cast<bool*>(flag) = true;
            return G_SOURCE_REMOVE;
        },
        &hasPassed);
    runUntil([&] { return hasPassed; });
    desktop.awaitRole(thisProcess, "AXTextField");
}

TEST_F(FocusSearch, inTheBackgroundEndsWithTheProbe) {
    desktop.setActiveWindow(0);
    desktop.probe().follow(true);
    program.setSilent(true);
    EXPECT_EQ(role(), std::nullopt); // which has it looked for
    desktop.endProbe();
}

} // namespace

} // namespace tavel
