#pragma once

#include "Support/Bytes.h"

#include <string>

namespace tavel {

/// The name that stands for standard input where a file is asked for.
inline constexpr const char* standardInputName = "-";

/// Everything that is in the file, or comes from standard input until its end. Throws Error.
Bytes readInput(const std::string& file);

} // namespace tavel
