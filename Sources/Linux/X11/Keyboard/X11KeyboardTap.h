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

/// The keyboard of an X server, as far as it is about pasting: sees Control+V while the active window is a
/// file manager's, and no other key. Everything else about keys goes past this process.
///
/// - Control is reported as the command key, Alt as option, the Windows key as control.
/// - A press waits for the handler for a tenth of a second at the most. If the main thread does not come to
///   it in time, the key passes and the handler never hears of it. If the handler takes too long, the key
///   passes, and if it was to be swallowed, an event tapDisabledByTimeout follows; the tap goes on.
/// - It is refused if another program has grabbed Control+V for the whole screen. Where two programs with
///   such a tap run, the one that grabbed an active window first has its keys; to the other one nothing
///   happens there.
/// - Without the server it does nothing.
class X11KeyboardTap final : public KeyboardTap {
public:
    /// How long the user's keyboard may wait for the handler, which nobody notices.
    static constexpr std::chrono::milliseconds usualDecisionTime{80};

    /// Of the server that `display` names, or DISPLAY if it is null. Connects in `create`. The loop and the
    /// deadline, which is set around each decision of the handler's, have to outlive this object.
    X11KeyboardTap(const char* display, EventLoop& loop, DecisionDeadline& deadline,
                   std::chrono::milliseconds decisionTime = usualDecisionTime);
    ~X11KeyboardTap() override;
    X11KeyboardTap(const X11KeyboardTap&) = delete;
    X11KeyboardTap& operator=(const X11KeyboardTap&) = delete;

    bool create(Handler handler) override;
    void setEnabled(bool enabled) override;
    bool isKeyDown(std::int64_t keyCode) override;
    void post(std::span<const KeyEvent> events) override;

private:
    class Decider;

    KeyTapThread::Listener listener();

    const std::optional<std::string> display_;
    EventLoop& loop_;
    DecisionDeadline& deadline_;
    const std::chrono::milliseconds decisionTime_;
    std::shared_ptr<Decider> decider_; // what is posted to the loop knows it weakly
    std::unique_ptr<KeyboardConnection> connection_;
    std::unique_ptr<KeyTapThread> thread_;
};

} // namespace tavel
