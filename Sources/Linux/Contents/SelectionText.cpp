#include "Linux/Contents/SelectionText.h"

#include "Linux/Contents/TargetNames.h"
#include "Platform/PasteboardTypes.h"
#include "Support/Text.h"

#include <glib.h>

#include <memory>
#include <vector>

namespace tavel {

namespace {

constexpr std::string_view bigEndianMark("\xFE\xFF", 2);
constexpr std::string_view littleEndianMark("\xFF\xFE", 2);
constexpr char escape = '\x1B';
constexpr std::size_t longestTerminator = 4;

Bytes withoutTrailingZeros(const Bytes& bytes, bool isCut) {
    if (isCut)
        return bytes; // the zeros are followed by something else
    const std::size_t last = bytes.view().find_last_not_of('\0');
    return bytes.slice(0, last == std::string_view::npos ? 0 : last + 1);
}

std::optional<Bytes> converted(std::string_view text, const char* from, const char* to) {
    if (text.empty())
        return Bytes();
    gsize size = 0;
    char* const result =
        g_convert(text.data(), static_cast<gssize>(text.size()), to, from, nullptr, &size, nullptr);
    if (result == nullptr)
        return std::nullopt;
    return Bytes(std::shared_ptr<const void>(result, g_free), result, size);
}

/// Whether the name of a target or type declares UTF-8.
bool saysUtf8(const std::string& name) {
    const std::vector<std::string> names{name};
    return name == targetName::utf8String || (name.find('=') != std::string::npos &&
                                              !targetName::giving(pasteboardType::string, names).empty());
}

std::optional<Bytes> fromLatin1(const Bytes& text) {
    return converted(text.view(), "ISO-8859-1", "UTF-8");
}

} // namespace

std::size_t largestPlainTextValue(std::size_t limit) {
    return limit + longestTerminator;
}

std::size_t largestHtmlValue(std::size_t limit) {
    return bigEndianMark.size() + 2 * limit + longestTerminator;
}

std::optional<Bytes> plainTextOf(const SelectionValue& value) {
    if (value.format != 8)
        return std::nullopt;
    Bytes text = withoutTrailingZeros(value.bytes, value.isCut);
    if (value.isCut)
        text = text.slice(0, withoutPartialCharacter(text.view()).size());
    if (saysUtf8(value.type))
        return text;
    if (value.type == targetName::compoundText) {
        // Without an escape sequence, compound text is Latin-1 (Compound Text Encoding, 5).
        return text.view().find(escape) == std::string_view::npos ? fromLatin1(text) : std::nullopt;
    }
    if (value.type == targetName::latin1String && !saysUtf8(value.target))
        return fromLatin1(text);
    // The owner declares no encoding, or not its own.
    return isUtf8(text.view()) ? text : fromLatin1(text);
}

Bytes htmlOf(const SelectionValue& value) {
    const std::string_view bytes = value.bytes.view();
    const bool isBigEndian = bytes.starts_with(bigEndianMark);
    if (isBigEndian || bytes.starts_with(littleEndianMark)) {
        // Drops an odd last byte: half of a terminating zero that the owner included.
        const std::string_view text = bytes.substr(bigEndianMark.size(), (bytes.size() - 2) / 2 * 2);
        if (const auto html = converted(text, isBigEndian ? "UTF-16BE" : "UTF-16LE", "UTF-8"))
            return withoutTrailingZeros(*html, value.isCut);
    }
    return withoutTrailingZeros(value.bytes, value.isCut);
}

std::optional<Bytes> latin1Of(const Bytes& text) {
    return converted(text.view(), "UTF-8", "ISO-8859-1");
}

} // namespace tavel
