#pragma once

#include "Linux/Base/GlibEventLoop.h"
#include "Linux/X11/Keyboard/X11KeyboardTap.h"
#include "Platform/KeyboardTap.h"
#include "Tests/X11/Keyboard/KeyboardDesktop.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace tavel {

/// A desktop with a tap on its keyboard, whose main thread is the test's: its event loop runs while the test
/// waits for something.
class TappedDesktop : public testing::Test {
protected:
    static constexpr std::chrono::seconds timeOut{60};

    /// For tests in which no decision is to be given up, however busy the machine is.
    static constexpr std::chrono::seconds noHurry{40};

    /// Makes a tap, which the handler below serves.
    std::unique_ptr<X11KeyboardTap> makeTap(std::chrono::milliseconds decisionTime = noHurry);

    /// Starts `tap_`, and opens a file manager's window, which is the active one, on which the tap has
    /// grabbed its keys then.
    xcb_window_t startInFileManager(std::chrono::milliseconds decisionTime = noHurry);

    /// Opens another window, activates it, and returns when the tap's grabs are there.
    xcb_window_t switchToFileManager();

    /// Runs the event loop until the condition holds. Throws if it does not within the timeOut.
    void runUntil(const std::function<bool()>& condition);

    /// Runs what has been posted to the loop until now.
    void runPosted();

    /// Returns when the keys that the user typed before have arrived wherever they go, and the handler has
    /// seen what it was to see. Types a key into the window, the active one.
    void settle(xcb_window_t window);

    /// The handler has got that many events.
    void awaitEvents(std::size_t count);

    /// The types of the events that the handler has got.
    std::vector<KeyEventType> seenTypes() const;

    KeyboardDesktop desktop_;
    GlibEventLoop loop_;
    DecisionDeadline deadline_;
    std::vector<KeyEvent> seen_;
    std::function<KeyVerdict(const KeyEvent&)> decide_ = [](const KeyEvent&) { return KeyVerdict::swallow; };
    std::unique_ptr<X11KeyboardTap> tap_;
};

} // namespace tavel
