#include "TavelClipboardAgent/Formats/ValidRepresentation.h"

#include "Support/Text.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace tavel {

namespace {

/// The tag of RTF has to end within this many bytes.
constexpr std::size_t rtfPrologueBytes = 32;

bool startsWith(std::string_view data, std::string_view signature) {
    const auto isSame = [](char byte, char wanted) { return wanted == '.' || byte == wanted; };
    return data.size() >= signature.size() &&
           std::ranges::equal(data.substr(0, signature.size()), signature, isSame);
}

bool isContentOf(const ClipboardFormat& format, std::string_view data) {
    if (format.isValid != nullptr)
        return format.isValid(data);
    return std::ranges::any_of(format.signatures, [data](std::string_view signature) {
        return !signature.empty() && startsWith(data, signature);
    });
}

} // namespace

bool validRepresentation(std::string_view name, std::string_view data) {
    const ClipboardFormat* const format = findClipboardFormat(name);
    return format != nullptr && !data.empty() && data.size() <= maximumBytes(format->kind) &&
           isContentOf(*format, data);
}

bool isSvg(std::string_view data) {
    return isUtf8(data) && data.find("<svg") != std::string_view::npos;
}

bool isRtf(std::string_view data) {
    constexpr std::string_view whiteSpace = " \t\n\v\f\r";
    const std::string_view prologue = data.substr(0, rtfPrologueBytes);
    const auto isAscii = [](char byte) { return static_cast<unsigned char>(byte) <= 0x7F; };
    if (!std::ranges::all_of(prologue, isAscii))
        return false;
    const std::size_t first = prologue.find_first_not_of(whiteSpace);
    return first != std::string_view::npos && prologue.substr(first).starts_with("{\\rtf");
}

bool isPlainText(std::string_view data) {
    return std::memchr(data.data(), '\0', data.size()) == nullptr && isUtf8(data);
}

} // namespace tavel
