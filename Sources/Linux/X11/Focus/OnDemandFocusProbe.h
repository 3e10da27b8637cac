#pragma once

#include "Linux/Base/System.h"
#include "Linux/X11/Focus/FocusModule.h"
#include "Platform/FocusProbe.h"

#include <filesystem>
#include <memory>

namespace tavel {

/// The focus probe of the module tavel-focus. The first `follow` loads the module, which then stays loaded,
/// so a process that never follows the focus never maps its libraries. Before that, no application is in
/// front.
class OnDemandFocusProbe final : public FocusProbe {
public:
    /// The connection and the deadline must outlive this object. Without a module at that path, `follow` logs
    /// an error each time and no application is ever in front.
    OnDemandFocusProbe(X11Connection& connection, DecisionDeadline& deadline, Log log,
                       std::filesystem::path module);

    void follow(bool on) override;
    std::optional<RunningApplication> frontmostApplication() override;
    bool isTrusted() override;
    std::optional<std::string> focusedRole(std::int32_t processIdentifier) override;
    void activate(std::int32_t processIdentifier) override;

private:
    void load();

    X11Connection& connection_;
    DecisionDeadline& deadline_;
    Log log_;
    std::filesystem::path path_;
    const FocusModule* module_ = nullptr;
    std::unique_ptr<X11FocusProbe, void (*)(X11FocusProbe*)> probe_{nullptr, nullptr};
};

} // namespace tavel
