#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <optional>
#include <string>

namespace tavel {

/// The object's text in UTF-8. Nothing for null, for an object of another type, and for a text with half of a
/// surrogate pair.
std::optional<std::string> utf8FromObject(CFTypeRef object);

} // namespace tavel
