#pragma once

#include "Platform/PasteboardTypes.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace tavel {

/// A format in which rich content travels between the parent and the pasteboard.
struct ClipboardFormat {
    std::string_view name; // on the parent's side; also the name of a representation's file
    std::string_view type; // on the pasteboard
};

/// All of them. The order decides which representations are kept when a clipboard holds more than may be
/// exported, and which picture a PNG is made from.
inline constexpr std::array<ClipboardFormat, 10> clipboardFormats{{
    {"document.pdf", "com.adobe.pdf"},
    {"image.gif", "com.compuserve.gif"},
    {"image.svg", "public.svg-image"},
    {"image.webp", "org.webmproject.webp"},
    {"image.tiff", pasteboardType::tiff},
    {"image.jpeg", "public.jpeg"},
    {"image.png", pasteboardType::png},
    {"text.rtf", "public.rtf"},
    {"text.html", "public.html"},
    {"text.txt", pasteboardType::string},
}};

/// The most that the representations of one clipboard may hold together, in bytes: 128 MiB.
inline constexpr std::size_t maximumFormatsBytes = 134'217'728;

/// The format of that name, which is compared exactly; null if there is none.
constexpr const ClipboardFormat* findClipboardFormat(std::string_view name) {
    const auto* const found = std::ranges::find(clipboardFormats, name, &ClipboardFormat::name);
    return found == clipboardFormats.end() ? nullptr : &*found;
}

} // namespace tavel
