#pragma once

#include "Linux/X11/Focus/X11FocusProbe.h"
#include "Tests/Support/TestDirectory.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/Support/XServer.h"
#include "Tests/X11/Focus/AccessibilityBus.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace tavel {

/// A time-out far beyond what any operation here needs.
inline constexpr std::chrono::seconds inTime{30};

/// An X server on which the test acts as the window manager, and the tested probe. There are no buses before
/// `startBuses`, and the environment names no other bus. The test's thread is the main thread.
class FocusDesktop {
public:
    FocusDesktop();

    X11FocusProbe& probe() { return *probe_; }
    DecisionDeadline& deadline() { return deadline_; }
    X11Connection& connection() { return *connection_; } // the probe's
    X11Connection& windowManager() { return *windowManager_; }
    xcb_window_t root() const { return root_; }
    TestDirectory& directory() { return directory_; }
    const std::string& display() const { return server_.display(); }

    TestAccessibilityBus& startBuses();
    TestAccessibilityBus& buses() { return *buses_; }

    /// Creates a window of that process and class (empty for none).
    xcb_window_t createWindow(std::optional<std::uint32_t> process, const std::string& className);
    void destroyWindow(xcb_window_t window);

    /// Sets the active window; 0 for none.
    void setActiveWindow(xcb_window_t window);

    /// Destroys the probe.
    void endProbe() { probe_.reset(); }

    /// Runs the main loop until the probe returns that role.
    void awaitRole(std::int32_t process, const std::optional<std::string>& role);

private:
    XServer server_;
    TestDirectory directory_;
    std::unique_ptr<X11Connection> windowManager_;
    std::unique_ptr<X11Connection> connection_;
    xcb_window_t root_;
    DecisionDeadline deadline_;
    std::unique_ptr<TestAccessibilityBus> buses_;
    std::unique_ptr<X11FocusProbe> probe_;
};

/// Runs GLib's default main context until the condition holds.
template <typename Condition>
void runUntil(const Condition& condition) {
    waitUntil(
        [&] {
            while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
            }
            return condition();
        },
        inTime);
}

} // namespace tavel
