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

/// A desktop with a keyboard tap. The test's thread is the tap's main thread; its event loop runs while the
/// test waits.
class TappedDesktop : public testing::Test {
protected:
    static constexpr std::chrono::seconds timeOut{60};

    /// For tests in which no decision may time out, even on a busy machine.
    static constexpr std::chrono::seconds noHurry{40};

    /// Makes a tap whose events go to the handler below.
    std::unique_ptr<X11KeyboardTap> makeTap(std::chrono::milliseconds decisionTime = noHurry);

    /// Starts `tap_`, opens and activates a file manager's window, and waits until the tap has grabbed its
    /// keys there.
    xcb_window_t startInFileManager(std::chrono::milliseconds decisionTime = noHurry);

    /// Opens and activates another window, and waits for the tap's grabs on it.
    xcb_window_t switchToFileManager();

    /// Runs the event loop until the condition holds. Throws after `timeOut`.
    void runUntil(const std::function<bool()>& condition);

    /// Runs the tasks that have been posted to the loop so far.
    void runPosted();

    /// Returns when all typed keys have arrived and the handler has seen its events. Types another key to
    /// find out. `window` must be the active one.
    void settle(xcb_window_t window);

    /// Waits until the handler has got that many events.
    void awaitEvents(std::size_t count);

    /// The types of the events that the handler has got so far.
    std::vector<KeyEventType> seenTypes() const;

    KeyboardDesktop desktop_;
    GlibEventLoop loop_;
    DecisionDeadline deadline_;
    std::vector<KeyEvent> seen_;
    std::function<KeyVerdict(const KeyEvent&)> decide_ = [](const KeyEvent&) { return KeyVerdict::swallow; };
    std::unique_ptr<X11KeyboardTap> tap_;
};

} // namespace tavel
