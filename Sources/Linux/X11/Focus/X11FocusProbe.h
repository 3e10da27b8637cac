#pragma once

#include "Linux/X11/ActiveWindow.h"
#include "Linux/X11/DecisionDeadline.h"
#include "Linux/X11/Focus/AccessibilityFocus.h"
#include "Linux/X11/X11Connection.h"
#include "Platform/FocusProbe.h"

#include <memory>
#include <unordered_map>

namespace tavel {

/// Learns the frontmost program from the window manager and its focus from the accessibility bus. Programs
/// may report anything, but they cannot delay this process.
///
/// If a file manager becomes active or loses the focus without a further report, the probe searches for its
/// focus in the background. That needs GLib's default main context to run.
class X11FocusProbe final : public FocusProbe {
public:
    /// Both must outlive this object. `wait` waits for the connection's replies. `follow` makes all other
    /// connections.
    X11FocusProbe(X11Connection& connection, const ReplyWaiter& wait, DecisionDeadline& deadline);

    /// Connects to the accessibility bus, unless a connection exists and still works.
    void follow(bool on) override;

    std::optional<RunningApplication> frontmostApplication() override;

    /// True while following with a working connection to the accessibility bus.
    bool isTrusted() override;

    std::optional<std::string> focusedRole(std::int32_t processIdentifier) override;

    /// Activates the window of that process that was in front last. No effect if none was.
    void activate(std::int32_t processIdentifier) override;

private:
    std::optional<std::uint32_t> hurriedRole(std::int32_t processIdentifier);
    std::optional<std::uint32_t> unhurriedRole(std::int32_t processIdentifier);
    void lookForUntoldFocus();

    DecisionDeadline& deadline_;
    ActiveWindow activeWindow_;
    std::unordered_map<std::int32_t, xcb_window_t> seenWindows_; // by process
    std::unique_ptr<AccessibilityFocus> focus_;                  // while following
};

} // namespace tavel
