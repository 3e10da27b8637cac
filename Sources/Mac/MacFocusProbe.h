#pragma once

#include "Platform/FocusProbe.h"

namespace tavel {

/// Applications come from NSWorkspace, the focused element from the accessibility interface.
class MacFocusProbe final : public FocusProbe {
public:
    /// Does nothing: the system answers at any time.
    void follow(bool on) override;

    std::optional<RunningApplication> frontmostApplication() override;
    bool isTrusted() override;
    std::optional<std::string> focusedRole(std::int32_t processIdentifier) override;
    void activate(std::int32_t processIdentifier) override;
};

} // namespace tavel
