#pragma once

#include "Mac/Application.h"

#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

namespace tavel {

inline constexpr std::chrono::seconds panelDeadline{30};

// The desktop for the tests of this program: an X server with a window manager, and a home directory of its
// own. It exists from the first test to the last.

/// The output of a shell command on that desktop. Fails the test if the command fails.
std::string onDesktop(const std::string& command);

/// The identifiers of the visible windows with that title, each followed by a line feed.
std::string windowsTitled(const std::string& title);

/// The identifier of the only such window; empty if there is none or more than one.
std::string windowTitled(const std::string& title);

/// The identifier of the window that has the keyboard focus.
std::string focusedWindow();

/// A part of the screen, in pixels; y grows downwards.
struct ScreenArea {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

/// The area of a window with its frame.
ScreenArea areaOfFrame(const std::string& window);

/// Passes events until `condition` holds, and checks it after each pass. Throws after panelDeadline.
template <typename Condition>
void passEventsUntil(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + panelDeadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            throw std::runtime_error("The condition did not hold in time.");
        passOneEvent(std::chrono::milliseconds(10));
    }
}

/// Passes events until none comes for 50 ms: those for a new application, and about windows that have gone.
inline void passEventsUntilQuiet() {
    constexpr std::chrono::milliseconds quiet{50};
    std::chrono::steady_clock::time_point start;
    do {
        start = std::chrono::steady_clock::now();
        passOneEvent(quiet);
    } while (std::chrono::steady_clock::now() - start < quiet);
}

} // namespace tavel
