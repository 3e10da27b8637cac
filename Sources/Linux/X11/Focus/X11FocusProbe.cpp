#include "Linux/X11/Focus/X11FocusProbe.h"

#include "Linux/X11/Focus/AccessibleRoles.h"
#include "Linux/X11/X11Reply.h"

namespace tavel {

namespace {

using Clock = AccessibilityFocus::Clock;

/// Together less than the second that following may take.
constexpr std::chrono::milliseconds connectingPatience{700};
constexpr std::chrono::milliseconds searchPatience{200};

/// Two questions, while a key waits.
constexpr std::chrono::milliseconds callPatience{40};
constexpr std::chrono::milliseconds rolePatience{80};

/// While none does. A file manager to which the focus has just come back, or which sees a new clipboard,
/// draws and looks at that first; without an answer, what the user has named would not be pasted.
constexpr std::chrono::milliseconds unhurriedPatience{500};

/// Process numbers come and go; those behind that many are not waited for any more.
constexpr std::size_t mostSeenWindows = 64;

xcb_window_t rootOf(X11Connection& connection) {
    const auto cookie = xcb_get_geometry(connection.get(), connection.window());
    const X11Reply<xcb_get_geometry_reply_t> reply(xcb_get_geometry_reply(connection.get(), cookie, nullptr));
    return reply == nullptr ? xcb_window_t{XCB_WINDOW_NONE} : reply->root;
}

} // namespace

X11FocusProbe::X11FocusProbe(X11Connection& connection, DecisionDeadline& deadline)
    : deadline_(deadline), activeWindow_(connection.get(), rootOf(connection)) {}

void X11FocusProbe::follow(bool on) {
    if (on && isTrusted())
        return;
    focus_.reset();
    if (!on)
        return;
    focus_ = AccessibilityFocus::open([this] { lookForUntoldFocus(); }, Clock::now() + connectingPatience);
    const auto active = activeWindow_.read();
    if (focus_ != nullptr && active && isFileManagerClass(active->className)) {
        focus_->search(active->processIdentifier, Clock::now() + searchPatience);
        // A file manager that is still busy with its start answers later, and should before the first key.
        focus_->searchInBackground(active->processIdentifier);
    }
}

std::optional<RunningApplication> X11FocusProbe::frontmostApplication() {
    const auto active = activeWindow_.read();
    if (!active)
        return std::nullopt;
    if (seenWindows_.size() >= mostSeenWindows)
        seenWindows_.clear();
    seenWindows_[active->processIdentifier] = active->window;
    const bool isFileManager = isFileManagerClass(active->className);
    return RunningApplication{active->processIdentifier, isFileManager ? "com.apple.finder" : ""};
}

bool X11FocusProbe::isTrusted() {
    return focus_ != nullptr && !focus_->isLost();
}

std::optional<std::string> X11FocusProbe::focusedRole(std::int32_t processIdentifier) {
    if (focus_ == nullptr)
        return std::nullopt;
    const auto role =
        deadline_.isDeciding() ? hurriedRole(processIdentifier) : unhurriedRole(processIdentifier);
    return role ? std::optional(roleName(*role)) : std::nullopt;
}

std::optional<std::uint32_t> X11FocusProbe::hurriedRole(std::int32_t processIdentifier) {
    const auto end = deadline_.limit(Clock::now() + rolePatience);
    const auto role = focus_->focusedRole(processIdentifier, end, callPatience);
    if (!role)
        focus_->searchInBackground(processIdentifier); // for the next time
    return role;
}

std::optional<std::uint32_t> X11FocusProbe::unhurriedRole(std::int32_t processIdentifier) {
    const auto end = Clock::now() + unhurriedPatience;
    if (const auto role = focus_->focusedRole(processIdentifier, end, unhurriedPatience))
        return role;
    // A program that has just come to the front may not have told yet.
    focus_->search(processIdentifier, end);
    return focus_->focusedRole(processIdentifier, end, unhurriedPatience);
}

void X11FocusProbe::activate(std::int32_t processIdentifier) {
    if (const auto seen = seenWindows_.find(processIdentifier); seen != seenWindows_.end())
        activeWindow_.activate(seen->second);
}

void X11FocusProbe::lookForUntoldFocus() {
    const auto active = activeWindow_.read();
    if (active && isFileManagerClass(active->className))
        focus_->searchInBackground(active->processIdentifier);
}

} // namespace tavel
