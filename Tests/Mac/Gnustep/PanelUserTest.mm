#include "Mac/Application.h"
#include "Mac/RaisedExceptions.h"
#include "Mac/Strings.h"
#include "TavelClipboardAgent/FilePaste/FileNamePanel.h"
#include "TavelClipboardAgent/Messages.h"
#include "Tests/Mac/Gnustep/PanelDesktop.h"
#include "Tests/Mac/Gnustep/PanelPlatform.h"

#import <AppKit/AppKit.h>
#include <gmock/gmock.h>

#include <chrono>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

@interface TavelMouseButton : NSObject
+ (void)letGo:(NSTimer*)timer;
@end

@implementation TavelMouseButton

+ (void)letGo:(NSTimer*)timer {
    (void)timer;
    tavel::onDesktop("xdotool mouseup 1");
}

@end

namespace tavel {

namespace {

using testing::ElementsAre;

/// The panel as the agent uses it, and a simulated user.
class PanelUser : public testing::Test {
protected:
    PanelUser() {
        becomeAccessoryApplication();
        // GNUstep still considers itself active after the previous test's window has gone.
        ignoringRaised([] { [NSApp deactivate]; });
        passEventsUntilQuiet();
    }
    ~PanelUser() override { [NSApplication setActivationGrants:nullptr]; }
    PanelUser(const PanelUser&) = delete;
    PanelUser& operator=(const PanelUser&) = delete;

    void open(const std::string& stem = "stem") {
        panel_ = FileNamePanel::make(platform_, stem, "txt");
        panel_->setFinished([this](const std::optional<std::string>& name) {
            reports_.push_back(name.value_or("cancelled"));
        });
    }

    /// Shows the panel and waits until its window has the focus.
    void show() {
        panel_->show();
        passEventsUntil([this] { return !(window_ = windowTitled(title_)).empty(); });
        passInputUntil([this] { return focusedWindow() == window_ && [NSApp keyWindow] != nil; });
    }

    void openAndShow(const std::string& stem = "stem") {
        open(stem);
        show();
    }

    void press(const std::string& keys) const { onDesktop("xdotool key " + keys); }
    void type(const std::string& text) const { onDesktop("xdotool type " + text); }

    /// Clicks in the content; `x` and `y` count from its top left corner. The release follows once GNUstep
    /// tracks the button: if press and release arrive together, it handles the release first.
    void click(int x, int y) const {
        @autoreleasepool {
            [[NSRunLoop currentRunLoop] addTimer:[NSTimer timerWithTimeInterval:0.01
                                                                         target:[TavelMouseButton class]
                                                                       selector:@selector(letGo:)
                                                                       userInfo:nil
                                                                        repeats:NO]
                                         forMode:NSEventTrackingRunLoopMode];
        }
        onDesktop("xdotool mousemove --window " + window_ + " " + std::to_string(x) + " " +
                  std::to_string(y) + " mousedown 1");
    }

    /// Passes events until `condition` holds. GNUstep finds events that it has buffered only when more
    /// arrive, so more are sent all the time.
    template <typename Condition>
    void passInputUntil(Condition condition) {
        const std::jthread more([this](const std::stop_token& stop) {
            while (!stop.stop_requested())
                onDesktop("xprop -id " + window_ + " -f TAVEL_MORE 8s -set TAVEL_MORE x 2>/dev/null || true");
        });
        passEventsUntil(condition);
    }

    void expectReport(const std::string& report) {
        passInputUntil([this] { return !reports_.empty(); });
        EXPECT_THAT(reports_, ElementsAre(report));
        reports_.clear();
    }

    bool isOnScreen() const { return !windowTitled(title_).empty(); }

    static std::string hint() {
        return unlessRaised(std::string(), [] {
            NSTextField* const field = [[[[NSApp keyWindow] contentView] subviews] objectAtIndex:2];
            return utf8FromString([field stringValue]).value_or("");
        });
    }

    /// Whether any panel's window still exists.
    static bool exists() {
        return unlessRaised(true, [] {
            for (NSWindow* window in [NSApp windows]) {
                if ([NSStringFromClass([window class]) isEqualToString:@"FileNamePanel"])
                    return true;
            }
            return false;
        });
    }

    /// Lets the time pass that the panel waits for the keyboard.
    void awaitKeyboard() { platform_.loop.advance(std::chrono::milliseconds(100)); }

    void leaveForAnotherProgram() {
        onDesktop("xdotool windowfocus $(xwininfo -root | awk '/Window id/ { print $4 }')");
        passInputUntil([] { return ![NSApp isActive]; });
    }

    void closePanel() { panel_.reset(); }
    FileNamePanel& panel() { return *panel_; }
    const std::string& window() const { return window_; }

private:
    const std::string title_{messages::panelTitle};
    PanelPlatform platform_;
    std::shared_ptr<FileNamePanel> panel_;
    std::string window_;
    std::vector<std::string> reports_;
};

TEST_F(PanelUser, typingReplacesTheStemAndReturnConfirms) {
    openAndShow();
    type("name");
    press("Return");
    expectReport("name.txt");
    EXPECT_TRUE(isOnScreen());
}

TEST_F(PanelUser, aStemHasAnyCharacters) {
    openAndShow("\xC3\x89t\xC3\xA9 % \xF0\x9F\x8C\xB5 = 1");
    press("Return");
    expectReport("\xC3\x89t\xC3\xA9 % \xF0\x9F\x8C\xB5 = 1.txt");
}

TEST_F(PanelUser, escapeCancels) {
    openAndShow();
    press("Escape");
    expectReport("cancelled");
}

TEST_F(PanelUser, buttonsReport) {
    openAndShow();
    type("name");
    click(255, 143);
    expectReport("cancelled");
    click(350, 143);
    expectReport("name.txt");
}

TEST_F(PanelUser, closeButtonCancelsAndClosesNothing) {
    openAndShow();
    press("alt+F4");
    expectReport("cancelled");
    EXPECT_TRUE(isOnScreen());
    press("Return");
    expectReport("stem.txt");
}

TEST_F(PanelUser, aRefusedNameShowsTheHintAndLeavesThePanel) {
    openAndShow();
    type("a/b");
    press("Return");
    passInputUntil([] { return hint() == messages::invalidName; });
    EXPECT_TRUE(isOnScreen());
    press("alt+a");
    type("good");
    press("Return");
    expectReport("good.txt");
}

TEST_F(PanelUser, commandKeysEditTheField) {
    openAndShow();
    type("part");
    press("alt+a alt+c End");
    press("alt+v Return");
    expectReport("partpart.txt");
    press("alt+a alt+x");
    type("new");
    press("alt+v Return");
    expectReport("newpartpart.txt");
}

TEST_F(PanelUser, theActionMayDestroyThePanel) {
    openAndShow();
    panel().setFinished([this](const auto&) { closePanel(); });
    EXPECT_TRUE(exists());
    press("Return");
    passInputUntil([this] { return !isOnScreen(); });
    EXPECT_FALSE(exists());
}

TEST_F(PanelUser, theClickedButtonMayDestroyThePanel) {
    openAndShow();
    panel().setFinished([this](const auto&) { closePanel(); });
    click(255, 143);
    passInputUntil([this] { return !isOnScreen(); });
    EXPECT_FALSE(exists());
}

TEST_F(PanelUser, hidingTakesItOffTheScreen) {
    openAndShow();
    panel().hide();
    passInputUntil([this] { return !isOnScreen(); });
}

TEST_F(PanelUser, staysOnTheScreenWhileTheApplicationIsNotActive) {
    openAndShow();
    leaveForAnotherProgram();
    EXPECT_TRUE(isOnScreen());
    onDesktop("xdotool windowfocus " + window());
    passInputUntil([] { return [NSApp isActive]; });
    press("Return");
    expectReport("stem.txt");
}

/// As macOS 14 and later are reported to behave while the user works in another program.
TEST_F(PanelUser, demandsTheActivationThatItWasRefused) {
    std::vector<std::string> asked;
    [NSApplication setActivationGrants:[&](BOOL ignoringOthers) {
        asked.emplace_back(ignoringOthers ? "demand" : "request");
        EXPECT_NE([NSApp keyWindow], nil) << "the panel is made the key window first";
        return ignoringOthers != NO;
    }];
    openAndShow();
    EXPECT_THAT(asked, ElementsAre("request"));
    leaveForAnotherProgram(); // the window manager has given the focus to the new window
    awaitKeyboard();
    EXPECT_THAT(asked, ElementsAre("request", "demand"));
    passInputUntil([] { return [NSApp isActive] && [NSApp keyWindow] != nil; });
    awaitKeyboard();
    EXPECT_THAT(asked, ElementsAre("request", "demand"));
}

class MacPanelPlace : public PanelUser {
protected:
    /// Opens the panel with the pointer at this place, in pixels from the top left of the screen.
    ScreenArea areaBesidePointer(int x, int y) {
        onDesktop("xdotool mousemove " + std::to_string(x) + " " + std::to_string(y));
        openAndShow();
        return areaOfFrame(window());
    }
};

TEST_F(MacPanelPlace, isBelowAndRightOfThePointer) {
    const ScreenArea area = areaBesidePointer(300, 200);
    EXPECT_EQ(area.left, 312);
    EXPECT_EQ(area.top, 212);
}

TEST_F(MacPanelPlace, isWithinTheScreenAtItsTopLeftCorner) {
    const ScreenArea area = areaBesidePointer(0, 1);
    EXPECT_EQ(area.left, 12);
    EXPECT_EQ(area.top, 13);
}

TEST_F(MacPanelPlace, isWithinTheScreenAtItsBottomRightCorner) {
    const ScreenArea area = areaBesidePointer(1279, 799);
    EXPECT_EQ(area.right, 1280);
    EXPECT_EQ(area.bottom, 800);
}

TEST_F(MacPanelPlace, isWithinTheScreenAtItsTopRightCorner) {
    const ScreenArea area = areaBesidePointer(1279, 1);
    EXPECT_EQ(area.right, 1280);
    EXPECT_EQ(area.top, 13);
}

TEST_F(MacPanelPlace, isWithinTheScreenAtItsBottomLeftCorner) {
    const ScreenArea area = areaBesidePointer(0, 799);
    EXPECT_EQ(area.left, 12);
    EXPECT_EQ(area.bottom, 800);
}

} // namespace

} // namespace tavel
