#pragma once

#include <string_view>

namespace tavel {

/// Opens all files that reading pictures of that type takes: libraries, their plugins, and what those read.
/// After it, a conversion opens none. False if one of them is missing.
bool prepareForType(std::string_view typeIdentifier);

} // namespace tavel
