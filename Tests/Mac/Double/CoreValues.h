#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <string>
#include <variant>

/// A double of Core Foundation's values: strings, numbers, Booleans and dictionaries.
namespace tavel::doubles {

/// The value of an object. A string is in UTF-16 and may be malformed, as it may be on a Mac.
using Value = std::variant<std::u16string, std::int64_t, double, bool>;

/// A new object with that value. The caller owns the one reference.
CFTypeRef createObject(const Value& value);

/// The text of a string, which may be a constant one.
std::u16string textOf(CFStringRef string);

} // namespace tavel::doubles
