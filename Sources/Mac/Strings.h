#pragma once

#import <Foundation/Foundation.h>

#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// The text as a string object, autoreleased; nil if the text is not UTF-8. Zero characters and a byte-order
/// mark are kept.
NSString* _Nullable stringFromUtf8(std::string_view text) NS_RETURNS_NOT_RETAINED;

/// The string in UTF-8. nullopt for nil, and for a string with an unpaired surrogate.
std::optional<std::string> utf8FromString(NSString* _Nullable string);

} // namespace tavel
