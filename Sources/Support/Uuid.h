#pragma once

#include <string>
#include <string_view>

namespace tavel {

/// A random UUID (RFC 4122, version 4) in its canonical form, with upper-case digits.
std::string makeUuid();

/// Whether `makeUuid` could have made it.
bool isUuid(std::string_view text);

} // namespace tavel
