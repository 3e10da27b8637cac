#include "Tests/Panel/PanelTest.h"

#include <cstdlib>
#include <fstream>

namespace tavel {

namespace {

using testing::HasSubstr;

constexpr const char* hintText = "Nom invalide ou r\xC3\xA9serv\xC3\xA9. L\xE2\x80\x99"
                                 "extension est conserv\xC3\xA9"
                                 "e.";

class PanelAppearance : public PanelTest {
protected:
    /// Takes screenshots until two are equal, because themes animate changes.
    Screenshot settledScreenshot() const {
        Screenshot last = takeScreenshot();
        waitUntil(
            [&] {
                Screenshot now = takeScreenshot();
                const bool isSettled = now.pixels == last.pixels;
                last = std::move(now);
                return isSettled;
            },
            panelDeadline);
        return last;
    }

    /// Saves a picture, with the window manager's frame, in the directory that TAVEL_PANEL_PICTURES names, if
    /// it is set.
    void keepPicture(const std::string& name) const {
        if (const char* const place = std::getenv("TAVEL_PANEL_PICTURES"))
            run("import -frame -window " + windowTitled(title) + " " + place + "/" + name);
    }
};

TEST_F(PanelAppearance, isAnUnresizableDialogAboveAndNotInTheTaskbar) {
    openPanel();
    show();
    EXPECT_EQ(windowFigure("Width"), 410);
    EXPECT_EQ(windowFigure("Height"), 170);
    const std::string sizes = windowProperty("WM_NORMAL_HINTS");
    EXPECT_THAT(sizes, HasSubstr("minimum size: 410 by 170"));
    EXPECT_THAT(sizes, HasSubstr("maximum size: 410 by 170"));
    EXPECT_THAT(windowProperty("_NET_WM_WINDOW_TYPE"), HasSubstr("_NET_WM_WINDOW_TYPE_DIALOG"));
    const std::string state = windowProperty("_NET_WM_STATE");
    EXPECT_THAT(state, HasSubstr("_NET_WM_STATE_ABOVE"));
    EXPECT_THAT(state, HasSubstr("_NET_WM_STATE_SKIP_TASKBAR"));
    EXPECT_THAT(windowProperty("_NET_WM_NAME"), HasSubstr(title));
}

TEST_F(PanelAppearance, isLaidOutAsItsFramesSay) {
    openPanel("Image-2025-03-07-142501");
    show();
    run("xdotool mousemove 1279 799");
    const Screenshot picture = settledScreenshot();
    keepPicture("panel-1.png");
    // These areas count y from the top edge, the layout's frames from the bottom edge 170 points below.
    EXPECT_EQ(picture.markedPart({0, 50, 410, 30}), (Area{20, 52, 370, 26})) << "the field";
    EXPECT_EQ(picture.markedPart({200, 110, 102, 60}), (Area{210, 128, 90, 30})) << "cancels";
    EXPECT_EQ(picture.markedPart({302, 110, 108, 60}), (Area{305, 128, 90, 30})) << "confirms";
    const Area label = picture.markedPart({0, 0, 410, 50});
    EXPECT_NEAR(label.x, 20, 2);
    EXPECT_GT(label.width, 100);
    EXPECT_GE(label.y, 23);
    EXPECT_LE(label.y + label.height, 45);
    EXPECT_EQ(picture.markedPart({0, 79, 410, 48}), Area{}) << "no hint";
}

TEST_F(PanelAppearance, showsAHintInItsFrame) {
    openPanel("Image-2025-03-07-142501");
    show();
    run("xdotool mousemove 1279 799");
    EXPECT_EQ(ask(std::string("hint ") + hintText), "done");
    const Area hintFrame{20, 84, 370, 38};
    Area hint;
    waitUntil(
        [&] {
            return (hint = settledScreenshot().markedPart({0, 80, 410, 46})) != Area{};
        },
        panelDeadline);
    keepPicture("panel-2.png");
    EXPECT_NEAR(hint.x, hintFrame.x, 2);
    EXPECT_GE(hint.y, hintFrame.y);
    EXPECT_LE(hint.y + hint.height, hintFrame.y + hintFrame.height);
    EXPECT_LE(hint.x + hint.width, hintFrame.x + hintFrame.width);
    EXPECT_EQ(windowFigure("Height"), 170);
}

TEST_F(PanelAppearance, cutsAHintThatIsTooLongAtTwoLines) {
    openPanel();
    show();
    run("xdotool mousemove 1279 799");
    std::string text;
    for (int word = 0; word < 100; ++word)
        text += "indication ";
    EXPECT_EQ(ask("hint " + text), "done");
    Area hint;
    waitUntil(
        [&] {
            return (hint = settledScreenshot().markedPart({0, 80, 410, 46})) != Area{};
        },
        panelDeadline);
    EXPECT_LE(hint.y + hint.height, 122);
    EXPECT_GT(hint.height, 20) << "two lines";
    EXPECT_EQ(windowFigure("Width"), 410);
    EXPECT_EQ(windowFigure("Height"), 170);
}

TEST_F(PanelAppearance, keepsLongTextsInTheirFrames) {
    openPanel(std::string(300, 'W'));
    show();
    EXPECT_EQ(windowFigure("Width"), 410);
    EXPECT_EQ(settledScreenshot().markedPart({0, 50, 410, 30}), (Area{20, 52, 370, 26}));
}

} // namespace

} // namespace tavel
