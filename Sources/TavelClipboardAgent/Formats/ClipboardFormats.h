#pragma once

#include "Platform/PasteboardTypes.h"
#include "TavelClipboardAgent/Formats/ValidRepresentation.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace tavel {

enum class FormatKind {
    text,
    document,
    picture,
    vectorPicture, // which is never turned into pixels
};

/// How content becomes the file that a file manager pastes.
enum class FilePasting {
    none,
    asItIs,        // whatever the bytes are
    asItIsIfValid, // if `validRepresentation` agrees
    encodedAnew,   // as JPEG, or as PNG if the picture has an alpha channel
    asText,        // in UTF-8
};

/// A MIME name under which other programs know a format.
struct MimeName {
    std::string_view name;
    bool isOffered = false; // or only read
};

constexpr MimeName offered(std::string_view name) {
    return {name, true};
}

constexpr MimeName readOnly(std::string_view name) {
    return {name, false};
}

/// A format in which rich content travels between the parent and the pasteboard. Unused places of an array
/// are empty and stand at its end.
struct ClipboardFormat {
    std::string_view name;        // on the parent's side; also the name of a representation's file
    std::string_view type;        // on the pasteboard
    std::string_view description; // for people; of a picture without the word "picture"
    FormatKind kind = FormatKind::document;
    std::array<MimeName, 3> mimeNames{}; // the preferred one first; in lower case, without blanks
    std::array<std::string_view, 2> fileExtensions{}; // without a dot; a pasted file gets the first
    /// Valid content begins with one of these, in which '.' stands for any byte.
    std::array<std::string_view, 2> signatures{};
    bool (*isValid)(std::string_view) = nullptr; // decides for a format without signatures
    FilePasting pasting = FilePasting::none;
};

/// The catalogue: all that the agent, the platforms and the tools know of formats is derived from it. The
/// order decides which representations are kept when a clipboard holds more than may be exported, which
/// picture a PNG is made from, and which representation is pasted as a file when several could be pasted as
/// they are.
inline constexpr auto clipboardFormats = std::to_array<ClipboardFormat>({
    {.name = "document.pdf",
     .type = "com.adobe.pdf",
     .description = "PDF",
     .kind = FormatKind::document,
     .mimeNames = {offered("application/pdf")},
     .fileExtensions = {"pdf"},
     .signatures = {"%PDF-"},
     .pasting = FilePasting::asItIsIfValid},
    {.name = "image.gif",
     .type = "com.compuserve.gif",
     .description = "GIF",
     .kind = FormatKind::picture,
     .mimeNames = {offered("image/gif")},
     .fileExtensions = {"gif"},
     .signatures = {"GIF87a", "GIF89a"},
     .pasting = FilePasting::asItIs},
    {.name = "image.svg",
     .type = "public.svg-image",
     .description = "SVG",
     .kind = FormatKind::vectorPicture,
     .mimeNames = {offered("image/svg+xml")},
     .fileExtensions = {"svg"},
     .isValid = isSvg,
     .pasting = FilePasting::asItIs},
    {.name = "image.webp",
     .type = "org.webmproject.webp",
     .description = "WebP",
     .kind = FormatKind::picture,
     .mimeNames = {offered("image/webp")},
     .fileExtensions = {"webp"},
     // The container's length between the two is not checked: some writers get it wrong.
     .signatures = {"RIFF....WEBP"},
     .pasting = FilePasting::asItIs},
    {.name = "image.tiff",
     .type = pasteboardType::tiff,
     .description = "TIFF",
     .kind = FormatKind::picture,
     .mimeNames = {offered("image/tiff")},
     .fileExtensions = {"tiff", "tif"},
     .signatures = {std::string_view("II*\0", 4), std::string_view("MM\0*", 4)},
     .pasting = FilePasting::encodedAnew},
    {.name = "image.jpeg",
     .type = "public.jpeg",
     .description = "JPEG",
     .kind = FormatKind::picture,
     .mimeNames = {offered("image/jpeg")},
     .fileExtensions = {"jpg", "jpeg"},
     .signatures = {"\xFF\xD8\xFF"},
     .pasting = FilePasting::asItIsIfValid},
    {.name = "image.png",
     .type = pasteboardType::png,
     .description = "PNG",
     .kind = FormatKind::picture,
     .mimeNames = {offered("image/png")},
     .fileExtensions = {"png"},
     .signatures = {"\x89PNG\r\n\x1A\n"},
     .pasting = FilePasting::encodedAnew},
    {.name = "text.rtf",
     .type = "public.rtf",
     .description = "RTF",
     .kind = FormatKind::text,
     .mimeNames = {offered("text/rtf"), offered("application/rtf"), offered("text/richtext")},
     .fileExtensions = {"rtf"},
     .isValid = isRtf},
    {.name = "text.html",
     .type = pasteboardType::html,
     .description = "HTML",
     .kind = FormatKind::text,
     .mimeNames = {offered("text/html"), readOnly("text/html;charset=utf-8")},
     .fileExtensions = {"html", "htm"},
     .isValid = isPlainText},
    {.name = "text.txt",
     .type = pasteboardType::string,
     .description = "plain text",
     .kind = FormatKind::text,
     .mimeNames = {offered("text/plain;charset=utf-8"), readOnly("text/plain;charset=utf8"),
                   offered("text/plain")},
     .fileExtensions = {"txt"},
     .isValid = isPlainText,
     .pasting = FilePasting::asText},
});

/// The types of a plain picture, the preferred one first: of the pictures that become a file encoded anew,
/// the first is taken. The table's order is another, which is made for exports.
inline constexpr std::array plainPictureTypes{pasteboardType::png, pasteboardType::tiff};

static_assert(std::ranges::all_of(clipboardFormats, [](const ClipboardFormat& format) {
    const bool isPlainPicture = std::ranges::find(plainPictureTypes, format.type) != plainPictureTypes.end();
    return isPlainPicture == (format.pasting == FilePasting::encodedAnew);
}));

/// The most that one representation of that kind may hold, in bytes: 4 MiB of text, 128 MiB of all else.
constexpr std::size_t maximumBytes(FormatKind kind) {
    return kind == FormatKind::text ? 4'194'304 : 134'217'728;
}

/// The most that the representations of one clipboard may hold together, in bytes: 128 MiB.
inline constexpr std::size_t maximumFormatsBytes = 134'217'728;

/// The format of that name, which is compared exactly; null if there is none.
constexpr const ClipboardFormat* findClipboardFormat(std::string_view name) {
    const auto* const found = std::ranges::find(clipboardFormats, name, &ClipboardFormat::name);
    return found == clipboardFormats.end() ? nullptr : &*found;
}

} // namespace tavel
