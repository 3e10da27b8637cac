#include "Tests/Panel/PanelTest.h"

#include <utility>

namespace tavel {

namespace {

using testing::HasSubstr;

constexpr int screenHeight = 800;

class PanelPlace : public PanelTest {
protected:
    /// Waits until the bottom left corner of the frame is there; y grows upwards.
    void awaitOrigin(int x, int y) {
        waitUntil(
            [&] {
                const std::vector<int> frame = frameExtents();
                const int bottom =
                    windowFigure("Absolute upper-left Y") + windowFigure("Height") + frame.at(3);
                return windowFigure("Absolute upper-left X") - frame.at(0) == x && screenHeight - bottom == y;
            },
            panelDeadline);
    }
};

TEST_F(PanelPlace, isTheOriginWithTheFrame) {
    openPanel();
    EXPECT_EQ(ask("origin 123 45"), "done");
    show();
    EXPECT_GT(frameExtents().at(2), 0) << "a title bar";
    awaitOrigin(123, 45);
}

TEST_F(PanelPlace, surroundingsAreThePointerTheMonitorAndItsFreeArea) {
    startWindowManager(50, 30);
    startProgram();
    run("xdotool mousemove 300 200");
    ASSERT_EQ(ask("open stem"), "done");
    EXPECT_THAT(ask("surroundings"), HasSubstr("pointer 300 599 | 0 0 1280 800 | 50 30 1230 770 | window "));
}

TEST_F(PanelPlace, aPointerInTheFirstOrTheLastRowIsOnTheScreen) {
    startWindowManager();
    startProgram();
    for (const auto& [row, place] : {std::pair{0, "pointer 300 799 "}, std::pair{799, "pointer 300 0 "}}) {
        run("xdotool mousemove 300 " + std::to_string(row));
        ASSERT_EQ(ask("open stem"), "done");
        EXPECT_THAT(ask("surroundings"), HasSubstr(place));
    }
}

TEST_F(PanelPlace, surroundingsKnowTheFrameBeforeThePanelIsShown) {
    openPanel();
    const std::string before = ask("surroundings");
    show();
    const std::vector<int> frame = frameExtents();
    ASSERT_EQ(frame.size(), 4U);
    EXPECT_GT(frame[2], 0);
    EXPECT_THAT(before, HasSubstr("window " + std::to_string(410 + frame[0] + frame[1]) + " " +
                                  std::to_string(170 + frame[2] + frame[3])));
}

TEST_F(PanelPlace, withoutAWindowManagerThereIsNoFrame) {
    startProgram();
    ASSERT_EQ(ask("open stem"), "done");
    EXPECT_THAT(ask("surroundings"), HasSubstr("window 410 170"));
    EXPECT_EQ(ask("origin 10 20"), "done");
    EXPECT_EQ(ask("show"), "done");
    windowTitled(title);
    EXPECT_EQ(windowFigure("Absolute upper-left X"), 10);
    EXPECT_EQ(windowFigure("Absolute upper-left Y"), screenHeight - 20 - 170);
}

TEST_F(PanelPlace, theWindowCountsAsTheProgramsOwn) {
    openPanel();
    show();
    EXPECT_EQ(windowProperty("_NET_WM_PID"), "_NET_WM_PID(CARDINAL) = " + ask("process") + "\n");
    EXPECT_EQ(windowProperty("WM_CLASS"), "WM_CLASS(STRING) = \"tavel-panel\", \"tavel-panel\"\n");
}

TEST_F(PanelPlace, aWindowManagerDoesNotEndTheProgramForAPanelThatHangs) {
    openPanel();
    show();
    EXPECT_THAT(windowProperty("WM_PROTOCOLS"),
                testing::AllOf(HasSubstr("WM_DELETE_WINDOW"), testing::Not(HasSubstr("_NET_WM_PING"))));
}

TEST_F(PanelPlace, takesTheFocusFromTheWindowThatHasIt) {
    openPanel();
    const TestProcess other(
        {"/bin/sh", "-c", "DISPLAY=$0 exec xterm -T other -e cat 2>/dev/null", server().display()});
    const std::string window = windowTitled("other");
    for (int time = 0; time < 2; ++time) {
        ASSERT_EQ(ask("open stem"), "done");
        run("xdotool windowactivate --sync " + window);
        waitUntil([&] { return focusedWindow() == window; }, panelDeadline);
        type("in-the-other-window");
        show();
        type("name");
        expectText("name");
        EXPECT_EQ(ask("hide"), "done");
        waitUntil([&] { return focusedWindow() == window; }, panelDeadline);
    }
}

} // namespace

} // namespace tavel
