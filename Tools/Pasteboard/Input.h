#pragma once

#include "Support/Bytes.h"

#include <string>

namespace tavel {

/// The file name that means standard input.
inline constexpr const char* standardInputName = "-";

/// The whole content of the file or of standard input. Throws Error.
Bytes readInput(const std::string& file);

} // namespace tavel
