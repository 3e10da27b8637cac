#include "Mac/CoreStrings.h"

#include "Mac/Utf16.h"

#include <cstddef>

namespace tavel {

static_assert(sizeof(UniChar) == sizeof(char16_t));

std::optional<std::string> utf8FromObject(CFTypeRef object) {
    if (object == nullptr || CFGetTypeID(object) != CFStringGetTypeID())
        return std::nullopt;
    const auto* const string = static_cast<CFStringRef>(object);
    const CFIndex length = CFStringGetLength(string);
    std::u16string units(static_cast<std::size_t>(length), u'\0');
    CFStringGetCharacters(string, CFRangeMake(0, length), reinterpret_cast<UniChar*>(units.data()));
    return utf8FromUtf16(units);
}

} // namespace tavel
