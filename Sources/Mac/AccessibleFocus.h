#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tavel {

/// The accessibility role (such as AXList) of the element that has the keyboard focus in that process.
/// nullopt if there is none, or if the process takes longer than 0.04 s to answer either of two requests.
/// Main thread only.
std::optional<std::string> accessibleFocusRole(std::int32_t processIdentifier);

} // namespace tavel
