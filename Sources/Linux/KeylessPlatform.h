#pragma once

#include "Linux/LinuxPlatform.h"
#include "Platform/NoFocusProbe.h"

#include <cstdint>
#include <memory>
#include <span>

namespace tavel {

/// Where no key can be intercepted or typed, no tap can be created.
class RefusedKeyboardTap final : public KeyboardTap {
public:
    bool create(Handler) override { return false; }
    void remove() override {}
    void setEnabled(bool) override {}
    bool canLosePermission() override { return false; }
    bool isPermitted() override { return true; }
    bool isKeyDown(std::int64_t) override { return false; }
    void post(std::span<const KeyEvent>) override {}
};

/// The part that the platforms without pasting into file managers share: no keyboard, no focus, no panel.
class KeylessPlatform : public LinuxPlatform {
public:
    KeyboardTap& keyboardTap() final { return keyboardTap_; }
    FocusProbe& focusProbe() final { return focusProbe_; }
    bool canShowNamePanel() final { return false; }
    std::unique_ptr<NamePanelView> makeNamePanelView(const NamePanelTexts&, NamePanelActions) final {
        return nullptr;
    }

private:
    RefusedKeyboardTap keyboardTap_;
    NoFocusProbe focusProbe_;
};

} // namespace tavel
