#include "Linux/X11/Focus/X11FocusProbe.h"

#include "Linux/X11/Focus/AccessibleRoles.h"
#include "Linux/X11/X11Reply.h"

namespace tavel {

namespace {

using Clock = AccessibilityFocus::Clock;

/// Together they stay below one second, the limit for switching the probe on.
constexpr std::chrono::milliseconds connectingTimeOut{700};
constexpr std::chrono::milliseconds searchTimeOut{200};

/// For a pending key decision: the time-out of each of two calls, and of both together.
constexpr std::chrono::milliseconds callTimeOut{40};
constexpr std::chrono::milliseconds roleTimeOut{80};

/// For a query without a pending key decision. A file manager that has just got the focus back, or sees a new
/// clipboard, answers only after its own work. Without an answer the named file would not be pasted.
constexpr std::chrono::milliseconds unhurriedTimeOut{500};

/// Process numbers come and go; those behind that many are not waited for any more.
constexpr std::size_t mostSeenWindows = 64;

xcb_window_t rootOf(X11Connection& connection, const ReplyWaiter& wait) {
    const auto cookie = xcb_get_geometry(connection.get(), connection.window());
    const auto reply = awaitReply(wait, cookie, xcb_get_geometry_reply);
    return reply == nullptr ? xcb_window_t{XCB_WINDOW_NONE} : reply->root;
}

} // namespace

X11FocusProbe::X11FocusProbe(X11Connection& connection, const ReplyWaiter& wait, DecisionDeadline& deadline)
    : deadline_(deadline), activeWindow_(connection.get(), rootOf(connection, wait), wait) {}

void X11FocusProbe::follow(bool on) {
    if (on && isTrusted())
        return;
    focus_.reset();
    if (!on)
        return;
    focus_ = AccessibilityFocus::open([this] { lookForUntoldFocus(); }, Clock::now() + connectingTimeOut);
    const auto active = activeWindow_.read();
    if (focus_ != nullptr && active && isFileManagerClass(active->className)) {
        focus_->search(active->processIdentifier, Clock::now() + searchTimeOut);
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
    const auto end = deadline_.limit(Clock::now() + roleTimeOut);
    const auto role = focus_->focusedRole(processIdentifier, end, callTimeOut);
    if (!role)
        focus_->searchInBackground(processIdentifier); // for the next time
    return role;
}

std::optional<std::uint32_t> X11FocusProbe::unhurriedRole(std::int32_t processIdentifier) {
    const auto end = Clock::now() + unhurriedTimeOut;
    if (const auto role = focus_->focusedRole(processIdentifier, end, unhurriedTimeOut))
        return role;
    // A program that has just come to the front may not have told yet.
    focus_->search(processIdentifier, end);
    return focus_->focusedRole(processIdentifier, end, unhurriedTimeOut);
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
