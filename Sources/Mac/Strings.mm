#include "Mac/Strings.h"

#include "Mac/Utf16.h"

#include <algorithm>

namespace tavel {

static_assert(sizeof(unichar) == sizeof(char16_t));

// Both functions go through UTF-16, the encoding of NSString's characters. NSString's own conversion from
// UTF-8 may drop a byte-order mark, and its conversion to UTF-8 ends at a zero character.

NSString* _Nullable stringFromUtf8(std::string_view text) {
    const auto units = utf16FromUtf8(text);
    if (!units)
        return nil;
    return [[[NSString alloc] initWithCharacters:reinterpret_cast<const unichar*>(units->data())
                                          length:units->size()] autorelease];
}

std::optional<std::string> utf8FromString(NSString* _Nullable string) {
    return utf8Beginning(string, [string length]);
}

std::optional<std::string> utf8Beginning(NSString* _Nullable string, std::size_t limit) {
    if (string == nil)
        return std::nullopt;
    // Each unit takes one byte at least, so limit + 1 units exceed the limit.
    std::u16string units(std::min<std::size_t>([string length], limit + 1), u'\0');
    [string getCharacters:reinterpret_cast<unichar*>(units.data()) range:NSMakeRange(0, units.size())];
    return utf8FromUtf16(units);
}

} // namespace tavel
