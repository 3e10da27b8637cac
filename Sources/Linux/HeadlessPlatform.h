#pragma once

#include "Linux/LinuxPlatform.h"
#include "Linux/Store/PasteboardStore.h"
#include "Platform/NoFocusProbe.h"

#include <memory>
#include <optional>

namespace tavel {

/// Without a keyboard, no tap can be created.
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

/// The platform of a machine without a display: pasteboards in the user's store, no keyboard, no windows.
class HeadlessPlatform final : public LinuxPlatform {
public:
    std::shared_ptr<Pasteboard> openPasteboard(const std::optional<std::string>& name) override;
    bool servesContents() override { return false; }
    void handOverContents() override {}
    KeyboardTap& keyboardTap() override { return keyboardTap_; }
    FocusProbe& focusProbe() override { return focusProbe_; }
    bool canShowNamePanel() override { return false; }
    std::unique_ptr<NamePanelView> makeNamePanelView(const NamePanelTexts&, NamePanelActions) override {
        return nullptr;
    }

private:
    RefusedKeyboardTap keyboardTap_;
    NoFocusProbe focusProbe_;
    std::shared_ptr<const PasteboardStore> store_; // opened with the first pasteboard
};

} // namespace tavel
