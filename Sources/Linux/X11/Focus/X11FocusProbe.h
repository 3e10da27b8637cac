#pragma once

#include "Linux/X11/ActiveWindow.h"
#include "Linux/X11/DecisionDeadline.h"
#include "Linux/X11/Focus/AccessibilityFocus.h"
#include "Linux/X11/X11Connection.h"
#include "Platform/FocusProbe.h"

#include <memory>
#include <unordered_map>

namespace tavel {

/// The window manager tells which program is in front, the accessibility bus where its focus is. Programs are
/// trusted with neither: they can say what they like, but not hold anybody up.
///
/// Beside the focus that programs tell by themselves, it looks for that of a file manager that has become
/// active or lost its focus and says no more, in the background; GLib's default main context has to run for
/// that.
class X11FocusProbe final : public FocusProbe {
public:
    /// Both have to outlive this object. Nothing else is connected to before `follow`.
    X11FocusProbe(X11Connection& connection, DecisionDeadline& deadline);

    /// Connects to the accessibility bus, if it is not connected to one that is still there.
    void follow(bool on) override;

    std::optional<RunningApplication> frontmostApplication() override;

    /// While it follows, and the accessibility bus is there.
    bool isTrusted() override;

    std::optional<std::string> focusedRole(std::int32_t processIdentifier) override;

    /// The window that was seen in front last of that process; nothing if none was.
    void activate(std::int32_t processIdentifier) override;

private:
    void lookForUntoldFocus();

    DecisionDeadline& deadline_;
    ActiveWindow activeWindow_;
    std::unordered_map<std::int32_t, xcb_window_t> seenWindows_; // by process
    std::unique_ptr<AccessibilityFocus> focus_;                  // while following
};

} // namespace tavel
