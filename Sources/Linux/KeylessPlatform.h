#pragma once

#include "Linux/LinuxPlatform.h"
#include "Platform/NoFocusProbe.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>

namespace tavel {

/// Where no key can be intercepted or typed, no tap can be created.
class RefusedKeyboardTap final : public KeyboardTap {
public:
    explicit RefusedKeyboardTap(std::string refusal) : refusal_(std::move(refusal)) {}

    bool create(Handler) override { return false; }
    std::string refusal() override { return refusal_; }
    void remove() override {}
    void setEnabled(bool) override {}
    bool canLosePermission() override { return false; }
    bool isPermitted() override { return true; }
    bool isKeyDown(std::int64_t) override { return false; }
    void post(std::span<const KeyEvent>) override {}

private:
    const std::string refusal_;
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

protected:
    /// `why`: a clause for people that says why there is no keyboard.
    explicit KeylessPlatform(std::string why) : keyboardTap_(std::move(why)) {}

private:
    RefusedKeyboardTap keyboardTap_;
    NoFocusProbe focusProbe_;
};

} // namespace tavel
