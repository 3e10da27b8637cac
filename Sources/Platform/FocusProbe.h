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

    /// Begins or ends following the keyboard focus, where that has to be done to know it. Takes a second at
    /// the most.
    virtual void follow(bool on) = 0;

    /// The program in front. A platform whose file managers are many gives all of them the bundle identifier
    /// of the home platform's, com.apple.finder.
    virtual std::optional<RunningApplication> frontmostApplication() = 0;

    /// Whether this process may ask other programs where their focus is.
    virtual bool isTrusted() = 0;

    /// The accessibility role of the element of that process that has the keyboard focus, in the home
    /// platform's names, such as AXList. Nothing without an answer; each of its two questions is given up
    /// after 0.04 s. While no key waits for a decision, a platform may look for it somewhat longer.
    virtual std::optional<std::string> focusedRole(std::int32_t processIdentifier) = 0;

    /// Asks the system to bring that process to the front. It happens later, if at all.
    virtual void activate(std::int32_t processIdentifier) = 0;
};

} // namespace tavel
