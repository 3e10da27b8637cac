#pragma once

#import <Foundation/Foundation.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// The text as a string object, autoreleased; nil if the text is not UTF-8. Zero characters and a byte-order
/// mark are kept.
NSString* _Nullable stringFromUtf8(std::string_view text) NS_RETURNS_NOT_RETAINED;

/// The string in UTF-8, with U+FFFD for each unpaired surrogate. nullopt for nil.
std::optional<std::string> utf8FromString(NSString* _Nullable string);

/// As `utf8FromString`, but of a string that takes more than `limit` bytes perhaps only a beginning, which
/// does so as well. A pair of surrogates that is cut in two there counts as an unpaired one.
std::optional<std::string> utf8Beginning(NSString* _Nullable string, std::size_t limit);

} // namespace tavel
