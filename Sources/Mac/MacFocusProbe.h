#pragma once

#include "Platform/FocusProbe.h"

namespace tavel {

/// The workspace's programs, and the accessibility interface for what is in them.
class MacFocusProbe final : public FocusProbe {
public:
    /// Nothing is to be done: the system answers at any time.
    void follow(bool on) override;

    std::optional<RunningApplication> frontmostApplication() override;
    bool isTrusted() override;
    std::optional<std::string> focusedRole(std::int32_t processIdentifier) override;
    void activate(std::int32_t processIdentifier) override;
};

} // namespace tavel
