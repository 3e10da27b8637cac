#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <string>
#include <variant>

/// The values of Core Foundation: strings, numbers, Booleans and dictionaries.
namespace tavel::doubles {

/// What an object can have for a value. A string is in UTF-16 and may be malformed, as it may on a Mac.
using Value = std::variant<std::u16string, std::int64_t, double, bool>;

/// An object with that value, and with one reference to it, the caller's.
CFTypeRef createObject(const Value& value);

/// The text of a string, a constant one included.
std::u16string textOf(CFStringRef string);

} // namespace tavel::doubles
