#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <optional>
#include <string>

namespace tavel {

/// The text of a CFString in UTF-8, with U+FFFD for each unpaired surrogate. nullopt if the object is null or
/// of another type.
std::optional<std::string> utf8FromObject(CFTypeRef object);

} // namespace tavel
