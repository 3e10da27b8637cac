#include "Tests/Mac/Double/CoreValues.h"

#include "Mac/Utf16.h"
#include "Tests/Mac/Double/ConstantString.h"
#include "Tests/Mac/Double/CoreObjects.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

using namespace tavel::doubles;

/// Only their addresses matter.
struct CFDictionaryKeyCallBacks {};
struct CFDictionaryValueCallBacks {};

namespace {

struct String final : Object {
    static constexpr Kind ofKind = stringKind;
    explicit String(std::u16string itsText) : Object(ofKind), text(std::move(itsText)) {}
    const std::u16string text;
};

struct Number final : Object {
    static constexpr Kind ofKind = numberKind;
    explicit Number(std::int64_t itsValue) : Object(ofKind), value(itsValue) {}
    explicit Number(double itsValue) : Object(ofKind), value(itsValue) {}
    const std::variant<std::int64_t, double> value;
};

struct TruthValue final : Object {
    static constexpr Kind ofKind = booleanKind;
    explicit TruthValue(bool itsValue) : Object(ofKind), value(itsValue) {}
    bool isConstant() const override { return true; }
    const bool value;
};

TruthValue yes(true);
TruthValue no(false);

/// Retains its keys and values if it was given the callbacks for it, and otherwise only borrows them.
struct Dictionary final : Object {
    static constexpr Kind ofKind = dictionaryKind;
    Dictionary() : Object(ofKind) {}
    std::vector<std::pair<CFTypeRef, CFTypeRef>> entries;
    std::vector<Reference> held;
    bool comparesKeys = false;
};

bool isEqual(CFTypeRef one, CFTypeRef other) {
    return one == other || (CFGetTypeID(one) == stringKind && CFGetTypeID(other) == stringKind &&
                            textOf(static_cast<CFStringRef>(one)) == textOf(static_cast<CFStringRef>(other)));
}

/// Whether the number can be converted to the type exactly.
bool convert(std::int64_t from, double& to) {
    to = static_cast<double>(from);
    constexpr double aboveAll = 9223372036854775808.0;
    return to < aboveAll && static_cast<std::int64_t>(to) == from;
}

} // namespace

namespace tavel::doubles {

CFTypeRef createObject(const Value& value) {
    if (const auto* const text = std::get_if<std::u16string>(&value))
        return refTo<CFTypeRef>(*new String(*text));
    if (const auto* const number = std::get_if<std::int64_t>(&value))
        return refTo<CFTypeRef>(*new Number(*number));
    if (const auto* const number = std::get_if<double>(&value))
        return refTo<CFTypeRef>(*new Number(*number));
    return refTo<CFTypeRef>(std::get<bool>(value) ? yes : no);
}

std::u16string textOf(CFStringRef string) {
    if (CFGetTypeID(string) == stringKind && isConstantString(string)) {
        const std::string_view text = constantText(string);
        return {text.begin(), text.end()};
    }
    return objectAt<String>(string).text;
}

} // namespace tavel::doubles

const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks{};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks{};

CFTypeID CFStringGetTypeID() {
    return stringKind;
}

CFTypeID CFNumberGetTypeID() {
    return numberKind;
}

CFTypeID CFBooleanGetTypeID() {
    return booleanKind;
}

/// A byte-order mark is a character of the text unless the representation is external.
CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex size,
                                    CFStringEncoding encoding, Boolean external) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    if (encoding != kCFStringEncodingUTF8)
        refuse("The double makes strings from UTF-8 only.");
    std::string_view text(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
    if (external != 0 && text.starts_with(mark))
        text.remove_prefix(mark.size());
    const auto units = tavel::utf16FromUtf8(text);
    return units ? static_cast<CFStringRef>(createObject(*units)) : nullptr;
}

CFIndex CFStringGetLength(CFStringRef string) {
    return static_cast<CFIndex>(textOf(string).size());
}

void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* buffer) {
    const std::u16string text = textOf(string);
    if (range.location < 0 || range.length < 0 ||
        range.location + range.length > static_cast<CFIndex>(text.size()))
        refuse("The range is outside the string.");
    std::copy_n(text.begin() + range.location, range.length, buffer);
}

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType type, const void* value) {
    if (type == kCFNumberDoubleType)
        return static_cast<CFNumberRef>(createObject(*static_cast<const double*>(value)));
    return static_cast<CFNumberRef>(createObject(*static_cast<const std::int64_t*>(value)));
}

/// Converts the number and returns whether the conversion was exact.
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
    if (type != kCFNumberDoubleType)
        refuse("The double gives numbers as type double only.");
    const auto& held = objectAt<Number>(number).value;
    auto& result = *static_cast<double*>(value);
    if (const auto* const integer = std::get_if<std::int64_t>(&held))
        return convert(*integer, result) ? 1 : 0;
    result = std::get<double>(held);
    return 1;
}

Boolean CFBooleanGetValue(CFBooleanRef boolean) {
    return objectAt<TruthValue>(boolean).value ? 1 : 0;
}

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void** keys, const void** values, CFIndex count,
                                   const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks) {
    auto& dictionary = *new Dictionary;
    dictionary.comparesKeys = keyCallBacks != nullptr;
    for (CFIndex i = 0; i < count; ++i) {
        dictionary.entries.emplace_back(keys[i], values[i]);
        if (keyCallBacks != nullptr)
            dictionary.held.emplace_back(keys[i]);
        if (valueCallBacks != nullptr)
            dictionary.held.emplace_back(values[i]);
    }
    return refTo<CFDictionaryRef>(dictionary);
}

const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
    const auto& looked = objectAt<Dictionary>(dictionary);
    for (const auto& [known, value] : looked.entries) {
        if (looked.comparesKeys ? isEqual(known, key) : known == key)
            return value;
    }
    return nullptr;
}
