#include "Tests/Panel/PanelTest.h"

namespace tavel {

namespace {

class PanelActions : public PanelTest {
protected:
    void SetUp() override {
        openPanel();
        show();
    }
};

TEST_F(PanelActions, typingReplacesTheStem) {
    EXPECT_EQ(ask("text"), "stem");
    type("name");
    expectText("name");
}

TEST_F(PanelActions, aTextHasAnyCharacters) {
    EXPECT_EQ(ask("open \xC3\x89t\xC3\xA9 %\t\xF0\x9F\x8C\xB5 = 1"), "done");
    show();
    expectText("\xC3\x89t\xC3\xA9 %\t\xF0\x9F\x8C\xB5 = 1");
}

TEST_F(PanelActions, returnConfirmsInTheField) {
    press("Return");
    EXPECT_EQ(next(), "confirm stem");
    EXPECT_TRUE(isPanelOnScreen());
}

TEST_F(PanelActions, enterOfTheKeypadConfirms) {
    press("KP_Enter");
    EXPECT_EQ(next(), "confirm stem");
}

TEST_F(PanelActions, whatTheUserCopiesOrCutsIsReported) {
    press("End ctrl+c"); // nothing is selected
    press("shift+Left ctrl+c");
    EXPECT_EQ(next(), "copy m");
    press("ctrl+a ctrl+x");
    EXPECT_EQ(next(), "copy stem");
}

/// With the platform that the agent has.
TEST_F(PanelActions, whatTheUserCopiesOutlivesThePanel) {
    ASSERT_EQ(ask("hide"), "done");
    awaitNoPanelProcess();
    ASSERT_EQ(ask("use-platform"), "done");
    ASSERT_EQ(ask("open \xC3\x89t\xC3\xA9"), "done");
    show();
    press("ctrl+a ctrl+c Escape");
    EXPECT_EQ(next(), "cancel");
    EXPECT_EQ(ask("hide"), "done");
    awaitNoPanelProcess();
    EXPECT_EQ(run("xclip -selection clipboard -o"), "\xC3\x89t\xC3\xA9");
}

TEST_F(PanelActions, escapeCancels) {
    press("Escape");
    EXPECT_EQ(next(), "cancel");
    EXPECT_TRUE(isPanelOnScreen());
}

TEST_F(PanelActions, controlAndFullStopCancel) {
    press("ctrl+period");
    EXPECT_EQ(next(), "cancel");
}

TEST_F(PanelActions, closeButtonCancelsAndClosesNothing) {
    press("alt+F4");
    EXPECT_EQ(next(), "cancel");
    EXPECT_EQ(ask("text"), "stem");
    EXPECT_TRUE(isPanelOnScreen());
}

TEST_F(PanelActions, buttonsReport) {
    const std::string window = windowTitled(title);
    run("xdotool mousemove --window " + window + " 255 143 click 1");
    EXPECT_EQ(next(), "cancel");
    run("xdotool mousemove --window " + window + " 350 143 click 1");
    EXPECT_EQ(next(), "confirm stem");
}

TEST_F(PanelActions, tabLeadsFromTheFieldToTheCancelButtonFirst) {
    press("Tab space");
    EXPECT_EQ(next(), "cancel");
    press("Tab space");
    EXPECT_EQ(next(), "confirm stem");
}

TEST_F(PanelActions, returnConfirmsAlsoOnTheCancelButton) {
    press("Tab space");
    EXPECT_EQ(next(), "cancel") << "it has the focus";
    press("Return");
    EXPECT_EQ(next(), "confirm stem");
}

TEST_F(PanelActions, aHintLeavesThePanelAsItIs) {
    type("name");
    expectText("name");
    EXPECT_EQ(ask("hint No."), "done");
    EXPECT_TRUE(isPanelOnScreen());
    type("2");
    expectText("name2");
}

TEST_F(PanelActions, escapeOnlyEndsACharacterThatIsBeingComposed) {
    press("ctrl+shift+u");
    type("e9");
    press("Escape"); // ends the input method's entry of a character code
    type("x");
    expectText("x");
    press("Escape");
    EXPECT_EQ(next(), "cancel");
}

/// A user action that makes the panel report. The panel may be destroyed during that report.
struct Way {
    const char* name;
    const char* command;
    const char* action;
};

class PanelDestroyed : public PanelActions, public testing::WithParamInterface<Way> {};

TEST_P(PanelDestroyed, inItsOwnActionIsGoneAndMayBeFollowedByAnother) {
    for (int time = 0; time < 2; ++time) {
        EXPECT_EQ(ask(std::string("destroy-with ") + GetParam().action), "done");
        run(GetParam().command);
        EXPECT_THAT(next(), testing::StartsWith(GetParam().action));
        waitUntil([&] { return !isPanelOnScreen(); }, panelDeadline);
        EXPECT_EQ(ask("text"), "no view");
        EXPECT_EQ(ask("open another"), "done");
        show();
        EXPECT_EQ(ask("text"), "another");
    }
}

const Way ways[] = {
    {"return", "xdotool key Return", "confirm"},
    {"escape", "xdotool key Escape", "cancel"},
    {"closeButton", "xdotool key alt+F4", "cancel"},
    {"space", "xdotool key Tab space", "cancel"},
    {"click", "xdotool search --onlyvisible --name '^Nommer avant' mousemove --window %1 350 143 click 1",
     "confirm"},
};

INSTANTIATE_TEST_SUITE_P(By, PanelDestroyed, testing::ValuesIn(ways),
                         [](const auto& test) { return test.param.name; });

TEST_F(PanelActions, aPanelThatIsDestroyedWhileItIsShownIsGone) {
    EXPECT_EQ(ask("destroy"), "done");
    waitUntil([&] { return !isPanelOnScreen(); }, panelDeadline);
}

} // namespace

} // namespace tavel
