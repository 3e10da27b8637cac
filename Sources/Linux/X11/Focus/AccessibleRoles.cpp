#include "Linux/X11/Focus/AccessibleRoles.h"

#include <algorithm>
#include <array>

namespace tavel {

namespace {

struct RoleName {
    std::uint32_t role;
    const char* name;
};

constexpr std::array roleNames{
    RoleName{6, "AXGroup"},       // canvas
    RoleName{26, "AXImage"},      // icon
    RoleName{30, "AXLayoutArea"}, // layered pane: the icons of Caja, Nemo and PCManFM
    RoleName{31, "AXList"},       // list
    RoleName{32, "AXRow"},        // list item
    RoleName{39, "AXGroup"},      // panel: the icons of Thunar
    RoleName{40, "AXTextField"},  // password
    RoleName{49, "AXScrollArea"}, // scroll pane: the icons of Nautilus
    RoleName{55, "AXTable"},      // table
    RoleName{56, "AXCell"},       // table cell
    RoleName{60, "AXTextArea"},   // terminal
    RoleName{61, "AXTextField"},  // text
    RoleName{65, "AXOutline"},    // tree
    RoleName{66, "AXOutline"},    // tree table
    RoleName{79, "AXTextField"},  // entry
    RoleName{90, "AXRow"},        // table row
    RoleName{91, "AXRow"},        // tree item
    RoleName{99, "AXGroup"},      // grouping
};

} // namespace

std::string roleName(std::uint32_t role) {
    const auto* const known = std::ranges::find(roleNames, role, &RoleName::role);
    return known == roleNames.end() ? "AXUnknown" : known->name;
}

bool isItemRole(std::uint32_t role) {
    const std::string name = roleName(role);
    return name == "AXImage" || name == "AXCell" || name == "AXRow";
}

bool isTextRole(std::uint32_t role) {
    const std::string name = roleName(role);
    return name == "AXTextField" || name == "AXTextArea";
}

} // namespace tavel
