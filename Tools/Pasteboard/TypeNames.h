#pragma once

#include <string>
#include <string_view>

namespace tavel {

/// The pasteboard type that a person means by `name`: the identifier behind a short name such as "html", and
/// any other name as it stands, since it may be an identifier itself.
std::string typeIdentifier(std::string_view name);

/// The short names with their identifiers, one pair a line, for the help text.
std::string typeNameTable();

} // namespace tavel
