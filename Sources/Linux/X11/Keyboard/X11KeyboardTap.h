#pragma once

#include "Linux/X11/DecisionDeadline.h"
#include "Linux/X11/Keyboard/KeyTapThread.h"
#include "Linux/X11/Keyboard/KeyboardConnection.h"
#include "Platform/EventLoop.h"
#include "Platform/KeyboardTap.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace tavel {

/// The keyboard tap of an X server. It sees Control+V while the active window belongs to a file manager, and
/// no other keys.
///
/// - Control is reported as the command key, Alt as option, the Windows key as control.
/// - A press waits for the handler for at most a tenth of a second. If the main thread starts too late, the
///   key passes and the handler is not called. If the handler takes too long, the key passes; if the handler
///   then wants to swallow it, it gets an event tapDisabledByTimeout. The tap stays active.
/// - `create` fails if another program has grabbed Control+V on the root window. Of two programs with such a
///   tap, the first to grab an active window gets its keys.
/// - Inactive once the server is lost.
class X11KeyboardTap final : public KeyboardTap {
public:
    /// How long the keyboard may be frozen for the handler: too short for the user to notice.
    static constexpr std::chrono::milliseconds usualDecisionTime{80};

    /// `display` names the server; null means that of DISPLAY. `create` connects to it. The handler runs with
    /// `deadline` set. The loop and the deadline must outlive this object.
    X11KeyboardTap(const char* display, EventLoop& loop, DecisionDeadline& deadline,
                   std::chrono::milliseconds decisionTime = usualDecisionTime);
    ~X11KeyboardTap() override;
    X11KeyboardTap(const X11KeyboardTap&) = delete;
    X11KeyboardTap& operator=(const X11KeyboardTap&) = delete;

    bool create(Handler handler) override;
    std::string refusal() override { return refusal_; }
    void remove() override;
    void setEnabled(bool enabled) override;
    bool canLosePermission() override { return false; }
    bool isPermitted() override { return true; }
    bool isKeyDown(std::int64_t keyCode) override;
    void post(std::span<const KeyEvent> events) override;

private:
    class Decider;

    KeyTapThread::Listener listener();
    void releaseRestored();

    const std::optional<std::string> display_;
    EventLoop& loop_;
    DecisionDeadline& deadline_;
    const std::chrono::milliseconds decisionTime_;
    std::shared_ptr<Decider> decider_; // functions posted to the loop hold it weakly
    std::unique_ptr<KeyboardConnection> connection_;
    std::unique_ptr<KeyTapThread> thread_;
    std::string refusal_;
    KeySet restored_; // modifier keys of the user that this object has pressed and not released
};

} // namespace tavel
