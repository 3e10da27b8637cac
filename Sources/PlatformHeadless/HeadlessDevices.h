#pragma once

#include "Platform/FocusProbe.h"
#include "Platform/KeyboardTap.h"

namespace tavel {

/// What a machine without a display answers: there is no keyboard, and no program in front.

class RefusedKeyboardTap final : public KeyboardTap {
public:
    bool create(Handler) override { return false; }
    void setEnabled(bool) override {}
    bool isKeyDown(std::int64_t) override { return false; }
    void post(std::span<const KeyEvent>) override {}
};

class NoFocusProbe final : public FocusProbe {
public:
    void follow(bool) override {}
    std::optional<RunningApplication> frontmostApplication() override { return std::nullopt; }
    bool isTrusted() override { return false; }
    std::optional<std::string> focusedRole(std::int32_t) override { return std::nullopt; }
    void activate(std::int32_t) override {}
};

} // namespace tavel
