#include "Platform/PasteboardTypes.h"
#include "Support/Error.h"
#include "TavelClipboardAgent/FilePaste/FilePaste.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"
#include "TavelClipboardAgent/main/Images.h"
#include "TavelClipboardAgent/main/Limits.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {

namespace {

/// The longest side of a picture that becomes a file, in pixels.
constexpr std::int64_t maximumImageSide = 32'768;

constexpr double jpegQuality = 0.9;

bool fits(FormatKind kind, const Bytes& data) {
    return data.size() <= maximumBytes(kind);
}

bool isPastedAsItIs(const ClipboardFormat& format, const Bytes& data) {
    return format.pasting == FilePasting::asItIsIfValid ? validRepresentation(format.name, data.view())
                                                        : fits(format.kind, data);
}

/// The first representation on the pasteboard that becomes a file as it is.
std::optional<FilePaste::FileData> unchangedContent(Pasteboard& board, std::span<const std::string> types) {
    for (const ClipboardFormat& format : clipboardFormats) {
        if (format.pasting != FilePasting::asItIs && format.pasting != FilePasting::asItIsIfValid)
            continue;
        if (!pasteboardType::isOffered(types, format.type))
            continue;
        auto data = board.data(format.type, maximumBytes(format.kind));
        if (data && isPastedAsItIs(format, *data))
            return FilePaste::FileData{*std::move(data), std::string(format.fileExtensions.front())};
    }
    return std::nullopt;
}

bool hasAllowedSize(const ImageSize& size) {
    return size.width >= 1 && size.height >= 1 && size.width <= maximumImageSide &&
           size.height <= maximumImageSide && size.width * size.height <= maximumImagePixels;
}

} // namespace

FilePaste::FileData FilePaste::fileData() {
    owner_.assertCurrent();
    const std::vector<std::string> types = board_->types();
    if (auto content = unchangedContent(*board_, types))
        return *std::move(content);
    if (auto image = encodedImage(types))
        return *std::move(image);
    const bool hasText = pasteboardType::isOffered(types, pasteboardType::string);
    const auto text = hasText ? board_->string(pasteboardType::string, maximumTextBytes) : std::nullopt;
    if (text && fits(FormatKind::text, *text))
        return {*text, "txt"};
    throw Error("Tavel", 4, "Nothing on the pasteboard can become a file.");
}

/// Encoding the picture anew makes the content agree with the extension, and leaves out metadata.
std::optional<FilePaste::FileData> FilePaste::encodedImage(std::span<const std::string> types) {
    ImageCodec& codec = platform_.imageCodec();
    const auto data = plainPicture(*board_, types);
    if (!data || !fits(FormatKind::picture, *data))
        return std::nullopt;
    const auto size = codec.measure(*data);
    if (!size || !hasAllowedSize(*size))
        return std::nullopt;
    const bool asPng = codec.hasAlpha(*data).value_or(false);
    if (!codec.canEncode(asPng ? "public.png" : "public.jpeg"))
        throw Error("Tavel", 3, "Pictures cannot be encoded here.");
    auto encoded = asPng ? codec.encodePng(*data) : codec.encodeJpeg(*data, jpegQuality);
    if (!encoded || !fits(FormatKind::picture, *encoded))
        return std::nullopt;
    return FileData{*std::move(encoded), asPng ? "png" : "jpg"};
}

} // namespace tavel
