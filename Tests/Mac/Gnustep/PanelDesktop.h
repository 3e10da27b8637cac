#pragma once

#include "Mac/Application.h"

#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

namespace tavel {

inline constexpr std::chrono::seconds panelDeadline{30};

// The desktop on which the tests of this program run: an X server with a window manager, and a home of their
// own. It is there from the first test to the last.

/// What a shell command prints on that desktop. Fails the test if the command fails.
std::string onDesktop(const std::string& command);

/// The numbers of the windows with that title on the screen, each ended by a line feed.
std::string windowsTitled(const std::string& title);

/// The only such window; empty if it is not the only one.
std::string windowTitled(const std::string& title);

/// The window that has the keyboard focus.
std::string focusedWindow();

/// A part of the screen, in pixels; y grows downwards.
struct ScreenArea {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

/// Where a window is, with its frame.
ScreenArea areaOfFrame(const std::string& window);

/// Passes events until `condition` holds, which is asked again and again. Throws when it does not in time.
template <typename Condition>
void passEventsUntil(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + panelDeadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            throw std::runtime_error("What was waited for did not happen.");
        passOneEvent(std::chrono::milliseconds(10));
    }
}

/// Passes what the system says to a new application, or about windows that have gone.
inline void passEventsUntilQuiet() {
    constexpr std::chrono::milliseconds quiet{50};
    std::chrono::steady_clock::time_point start;
    do {
        start = std::chrono::steady_clock::now();
        passOneEvent(quiet);
    } while (std::chrono::steady_clock::now() - start < quiet);
}

} // namespace tavel
