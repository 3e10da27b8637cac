#pragma once

#include <cstdint>
#include <string>

namespace tavel {

/// The home platform's name for the role with that number (AT-SPI, AtspiRole). "AXUnknown" for roles that
/// neither show files nor take text.
std::string roleName(std::uint32_t role);

/// Whether elements of that role are items of a view. The view keeps the keyboard focus.
bool isItemRole(std::uint32_t role);

/// Whether the user types into elements of that role.
bool isTextRole(std::uint32_t role);

} // namespace tavel
