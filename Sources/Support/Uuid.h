#pragma once

#include <string>

namespace tavel {

/// A random UUID (RFC 4122, version 4) in its canonical form, with upper-case digits.
std::string makeUuid();

} // namespace tavel
