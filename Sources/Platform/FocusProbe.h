#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tavel {

/// A running program as the user sees it.
struct RunningApplication {
    std::int32_t processIdentifier = 0;
    std::string bundleIdentifier; // empty if it has none
};

/// Tells which program the user works in, and where in it. Main thread only.
class FocusProbe {
public:
    virtual ~FocusProbe() = default;

    /// Starts or stops following the keyboard focus, on platforms that cannot ask for it at any time. Takes a
    /// second at most.
    virtual void follow(bool on) = 0;

    /// The program in front. On a platform with several file managers each of them has the bundle identifier
    /// of the home platform's file manager, com.apple.finder.
    virtual std::optional<RunningApplication> frontmostApplication() = 0;

    /// Whether this process may ask other programs where their focus is.
    virtual bool isTrusted() = 0;

    /// The accessibility role of the element of that process that has the keyboard focus, in the home
    /// platform's names, such as AXList. nullopt without an answer; each of the two requests behind it times
    /// out after 0.04 s. While no key waits for a decision, a platform may search somewhat longer.
    virtual std::optional<std::string> focusedRole(std::int32_t processIdentifier) = 0;

    /// Asks the system to bring that process to the front, and does not wait for it.
    virtual void activate(std::int32_t processIdentifier) = 0;
};

} // namespace tavel
