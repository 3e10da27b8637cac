#pragma once

#include "Linux/X11/DecisionDeadline.h"
#include "Linux/X11/X11Connection.h"
#include "Platform/FocusProbe.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tavel {

class X11FocusProbe;

/// What the module tavel-focus offers: the focus probe, whose libraries take longer to load than all the rest
/// of an agent. Plain functions and not a class with virtual ones, as the module and the program do not share
/// type information. Main thread only; none of them throws. They do as FocusProbe does.
struct FocusModule {
    /// Both arguments have to outlive the probe.
    X11FocusProbe* (*make)(X11Connection& connection, DecisionDeadline& deadline);
    void (*destroy)(X11FocusProbe* probe);

    void (*follow)(X11FocusProbe& probe, bool on);
    std::optional<RunningApplication> (*frontmostApplication)(X11FocusProbe& probe);
    bool (*isTrusted)(X11FocusProbe& probe);
    std::optional<std::string> (*focusedRole)(X11FocusProbe& probe, std::int32_t processIdentifier);
    void (*activate)(X11FocusProbe& probe, std::int32_t processIdentifier);
};

/// The module's only exported function, and its name.
using FocusModuleEntry = const FocusModule* (*)();
inline constexpr const char* focusModuleEntryName = "tavelFocusModule";

} // namespace tavel
