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

/// Far beyond what anything here needs.
inline constexpr std::chrono::seconds inTime{30};

/// An X server on which the test plays the window manager, and a probe to ask. There are no buses before
/// `startBuses`; this process's environment leads to nobody else's. The test's thread is the main thread.
class FocusDesktop {
public:
    FocusDesktop();

    X11FocusProbe& probe() { return *probe_; }
    DecisionDeadline& deadline() { return deadline_; }
    X11Connection& windowManager() { return *windowManager_; }
    xcb_window_t root() const { return root_; }
    TestDirectory& directory() { return directory_; }
    const std::string& display() const { return server_.display(); }

    TestAccessibilityBus& startBuses();
    TestAccessibilityBus& buses() { return *buses_; }

    /// A window of that process and class (empty for none).
    xcb_window_t createWindow(std::optional<std::uint32_t> process, const std::string& className);
    void destroyWindow(xcb_window_t window);

    /// Makes a window the active one; 0 for none.
    void setActiveWindow(xcb_window_t window);

    /// The probe goes, and all that it has.
    void endProbe() { probe_.reset(); }

    /// Lets the main loop run until the probe gives that role.
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

/// Lets GLib's default main context run until the condition holds.
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
