#pragma once

#include <cstdint>
#include <string>

namespace tavel {

/// The home platform's name of an accessible element's role, which is given by its number (AT-SPI,
/// AtspiRole). "AXUnknown" for what stands neither for files nor for a place to type.
std::string roleName(std::uint32_t role);

/// Whether elements of that role are items of a view, which itself keeps the keyboard focus.
bool isItemRole(std::uint32_t role);

/// Whether the user types into elements of that role.
bool isTextRole(std::uint32_t role);

} // namespace tavel
