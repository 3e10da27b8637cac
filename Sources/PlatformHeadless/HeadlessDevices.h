#pragma once

#include "Platform/FocusProbe.h"
#include "Platform/KeyboardTap.h"
#include "Platform/NamePanelView.h"

namespace tavel {

/// What a machine without a display answers: there is no keyboard, no program in front, no window.

class RefusedKeyboardTap final : public KeyboardTap {
public:
    bool create(Handler) override { return false; }
    void setEnabled(bool) override {}
    bool isKeyDown(std::int64_t) override { return false; }
    void postPasteShortcut(std::int64_t) override {}
};

class NoFocusProbe final : public FocusProbe {
public:
    std::optional<std::int32_t> frontmostFileManager() override { return std::nullopt; }
    bool isFocusInFileView(std::int32_t) override { return false; }
    bool isSelfFrontmost() override { return false; }
    void activate(std::int32_t) override {}
};

class NoNamePanelView final : public NamePanelView {
public:
    bool show(std::string_view, std::string_view, Actions) override { return false; }
    std::string enteredText() override { return {}; }
    void showHint(std::string_view) override {}
    void hide() override {}
};

} // namespace tavel
