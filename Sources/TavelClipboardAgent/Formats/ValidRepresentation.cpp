#include "TavelClipboardAgent/Formats/ValidRepresentation.h"

#include "Support/Text.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"

#include <cstddef>
#include <cstring>

namespace tavel {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t maximumTextFormatBytes = 4'194'304;
constexpr std::size_t maximumBinaryFormatBytes = 134'217'728;

/// How far into RTF its first group may begin, in bytes.
constexpr std::size_t rtfPrologueBytes = 32;

bool isWebp(std::string_view data) {
    // The container's length between the two is not checked: some writers get it wrong.
    return data.size() >= 12 && data.starts_with("RIFF") && data.substr(8, 4) == "WEBP";
}

bool isSvg(std::string_view data) {
    return isUtf8(data) && data.find("<svg") != std::string_view::npos;
}

bool isRtf(std::string_view data) {
    // White space and new lines as far as ASCII has them: U+0009 to U+000D, and the space.
    constexpr std::string_view whiteSpace = " \t\n\v\f\r";
    const std::string_view prologue = data.substr(0, rtfPrologueBytes);
    for (const char byte : prologue) {
        if (static_cast<unsigned char>(byte) > 0x7F)
            return false;
    }
    const std::size_t first = prologue.find_first_not_of(whiteSpace);
    return first != std::string_view::npos && prologue.substr(first).starts_with("{\\rtf");
}

bool isPlainText(std::string_view data) {
    return std::memchr(data.data(), '\0', data.size()) == nullptr && isUtf8(data);
}

} // namespace

bool validRepresentation(std::string_view name, std::string_view data) {
    if (findClipboardFormat(name) == nullptr || data.empty())
        return false;
    if (data.size() > (name.starts_with("text.") ? maximumTextFormatBytes : maximumBinaryFormatBytes))
        return false;

    if (name == "document.pdf")
        return data.starts_with("%PDF-");
    if (name == "image.png")
        return data.starts_with("\x89PNG\r\n\x1A\n");
    if (name == "image.gif")
        return data.starts_with("GIF87a") || data.starts_with("GIF89a");
    if (name == "image.jpeg")
        return data.starts_with("\xFF\xD8\xFF");
    if (name == "image.tiff")
        return data.starts_with("II*\0"sv) || data.starts_with("MM\0*"sv);
    if (name == "image.webp")
        return isWebp(data);
    if (name == "image.svg")
        return isSvg(data);
    if (name == "text.rtf")
        return isRtf(data);
    return isPlainText(data);
}

} // namespace tavel
