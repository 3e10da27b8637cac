#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tavel {

/// The accessibility role of the element of that process that has the keyboard focus, such as AXList. Nothing
/// if the process does not answer each of two questions within 0.04 s, or has no such element. Main thread.
std::optional<std::string> accessibleFocusRole(std::int32_t processIdentifier);

} // namespace tavel
