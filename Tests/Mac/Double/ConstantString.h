#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <string_view>

/// Strings of CFSTR, which the compiler lays out. They are never freed, and their references are not
/// counted.
namespace tavel::doubles {

/// Whether `object` is such a string. It must be an object, or a former one: its memory is read.
bool isConstantString(CFTypeRef object);

/// The text of a string in ASCII. The compiler lays out other texts in another way, which no adaptor uses.
std::string_view constantText(CFTypeRef constantString);

} // namespace tavel::doubles
