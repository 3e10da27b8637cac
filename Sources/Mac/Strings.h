#pragma once

#import <Foundation/Foundation.h>

#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// The same text as an object, autoreleased; nil if it is not UTF-8. Zero characters and a byte-order mark
/// stay what they are.
NSString* _Nullable stringFromUtf8(std::string_view text) NS_RETURNS_NOT_RETAINED;

/// The same text in UTF-8. Nothing for nil, and for a text with half of a surrogate pair.
std::optional<std::string> utf8FromString(NSString* _Nullable string);

} // namespace tavel
