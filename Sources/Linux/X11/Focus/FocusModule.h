#pragma once

#include "Linux/X11/DecisionDeadline.h"
#include "Linux/X11/X11Connection.h"
#include "Platform/FocusProbe.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tavel {

class X11FocusProbe;

/// The interface of the loadable module tavel-focus. It holds the focus probe, whose libraries take longer to
/// load than the rest of the agent. Plain functions instead of virtual ones, because module and program share
/// no type information. Main thread. They do not throw, and otherwise behave like those of FocusProbe.
struct FocusModule {
    /// The connection and the deadline must outlive the probe. `wait` waits for the connection's replies.
    X11FocusProbe* (*make)(X11Connection& connection, const ReplyWaiter& wait, DecisionDeadline& deadline);
    void (*destroy)(X11FocusProbe* probe);

    void (*follow)(X11FocusProbe& probe, bool on);
    std::optional<RunningApplication> (*frontmostApplication)(X11FocusProbe& probe);
    bool (*isTrusted)(X11FocusProbe& probe);
    std::optional<std::string> (*focusedRole)(X11FocusProbe& probe, std::int32_t processIdentifier);
    void (*activate)(X11FocusProbe& probe, std::int32_t processIdentifier);
};

/// The type and name of the module's only exported function.
using FocusModuleEntry = const FocusModule* (*)();
inline constexpr const char* focusModuleEntryName = "tavelFocusModule";

} // namespace tavel
