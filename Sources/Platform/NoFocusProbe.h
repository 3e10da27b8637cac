#pragma once

#include "Platform/FocusProbe.h"

namespace tavel {

/// Where there is nothing to be in front, as without a display: no application is frontmost.
class NoFocusProbe final : public FocusProbe {
public:
    void follow(bool) override {}
    std::optional<RunningApplication> frontmostApplication() override { return std::nullopt; }
    bool isTrusted() override { return false; }
    std::optional<std::string> focusedRole(std::int32_t) override { return std::nullopt; }
    void activate(std::int32_t) override {}
};

} // namespace tavel
