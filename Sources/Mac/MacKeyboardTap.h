#pragma once

#include "Mac/CFRef.h"
#include "Platform/KeyboardTap.h"

#include <CoreGraphics/CoreGraphics.h>

namespace tavel {

/// An event tap of Quartz Event Services for key presses and releases, placed after the taps of other
/// programs. The system refuses the tap unless the user has granted the permission (Accessibility).
class MacKeyboardTap final : public KeyboardTap {
public:
    MacKeyboardTap() = default;
    ~MacKeyboardTap() override;
    MacKeyboardTap(const MacKeyboardTap&) = delete;
    MacKeyboardTap& operator=(const MacKeyboardTap&) = delete;

    bool create(Handler handler) override;
    void remove() override;
    void setEnabled(bool enabled) override;
    bool canLosePermission() override { return true; }

    /// Makes another tap and drops it. Nothing else tells: the process can still count as trusted when the
    /// user has taken the permission away.
    bool isPermitted() override;

    bool isKeyDown(std::int64_t keyCode) override;
    void post(std::span<const KeyEvent> events) override;

private:
    /// The callback of the tap; `tap` is the MacKeyboardTap. Returns the event to let it pass, null to
    /// swallow it.
    static CGEventRef tapped(CGEventTapProxy proxy, CGEventType type, CGEventRef event, void* tap) noexcept;

    /// A tap whose callback gets `userInfo`, which may be null, enabled; null if the system refuses it. To be
    /// invalidated.
    static CFRef<CFMachPortRef> newTap(void* userInfo);

    KeyVerdict verdictOf(CGEventType type, CGEventRef event) const;

    Handler handler_;
    CFRef<CFMachPortRef> tap_;
    CFRef<CFRunLoopSourceRef> source_;
};

} // namespace tavel
