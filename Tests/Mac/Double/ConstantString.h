#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <string_view>

/// The strings of CFSTR, which the compiler lays out. They are there for ever, and nobody counts references
/// to them.
namespace tavel::doubles {

/// Whether what lies there is one. It has to be an object, or have been one.
bool isConstantString(CFTypeRef object);

/// Its text, which is of ASCII: the compiler lays out other texts in another way, which is not used.
std::string_view constantText(CFTypeRef constantString);

} // namespace tavel::doubles
