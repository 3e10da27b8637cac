#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <optional>
#include <string>

namespace tavel {

/// The text of a CFString in UTF-8. nullopt if the object is null or of another type, or if the text contains
/// an unpaired surrogate.
std::optional<std::string> utf8FromObject(CFTypeRef object);

} // namespace tavel
