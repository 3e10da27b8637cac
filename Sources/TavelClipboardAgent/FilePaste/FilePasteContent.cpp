#include "Platform/PasteboardTypes.h"
#include "Support/Error.h"
#include "TavelClipboardAgent/FilePaste/FilePaste.h"
#include "TavelClipboardAgent/main/Limits.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace tavel {

namespace {

constexpr std::string_view pdfSignature = "%PDF-";
constexpr std::string_view jpegSignature = "\xFF\xD8\xFF";

/// The longest side of a picture that becomes a file, in pixels.
constexpr std::int64_t maximumImageSide = 32'768;

constexpr double jpegQuality = 0.9;

struct ReadyRepresentation {
    std::string_view type;
    std::string_view signature; // with which the data have to begin
    std::string_view ext;
};

/// What goes into a file as it is, the best first.
constexpr std::array readyRepresentations{
    ReadyRepresentation{"com.adobe.pdf", pdfSignature, "pdf"},
    ReadyRepresentation{"com.compuserve.gif", "", "gif"},
    ReadyRepresentation{"public.svg-image", "", "svg"},
    ReadyRepresentation{"org.webmproject.webp", "", "webp"},
    ReadyRepresentation{"public.jpeg", jpegSignature, "jpg"},
};

bool isSmallEnough(const Bytes& data) {
    return data.size() <= static_cast<std::size_t>(maximumImageBytes);
}

bool hasAllowedSize(const ImageSize& size) {
    return size.width >= 1 && size.height >= 1 && size.width <= maximumImageSide &&
           size.height <= maximumImageSide && size.width * size.height <= maximumImagePixels;
}

} // namespace

FilePaste::FileData FilePaste::fileData() {
    owner_.assertCurrent();
    for (const auto& [type, signature, ext] : readyRepresentations) {
        const auto data = board_->data(type);
        if (data && data->view().starts_with(signature) && isSmallEnough(*data))
            return {*data, std::string(ext)};
    }
    if (auto image = encodedImage())
        return *std::move(image);
    const auto text = board_->string(pasteboardType::string);
    if (text && text->size() <= static_cast<std::size_t>(maximumTextBytes))
        return {*text, "txt"};
    throw Error("Tavel", 4, "Nothing on the pasteboard can become a file.");
}

/// Encodes the picture anew, so that the file holds what its extension says, and nothing else.
std::optional<FilePaste::FileData> FilePaste::encodedImage() {
    ImageCodec& codec = platform_.imageCodec();
    auto data = board_->data(pasteboardType::png);
    if (!data)
        data = board_->data(pasteboardType::tiff);
    if (!data || !isSmallEnough(*data))
        return std::nullopt;
    const auto size = codec.measure(*data);
    if (!size || !hasAllowedSize(*size))
        return std::nullopt;
    const bool asPng = codec.hasAlpha(*data).value_or(false);
    if (!codec.canEncode(asPng ? "public.png" : "public.jpeg"))
        throw Error("Tavel", 3, "Pictures cannot be encoded here.");
    auto encoded = asPng ? codec.encodePng(*data) : codec.encodeJpeg(*data, jpegQuality);
    if (!encoded || !isSmallEnough(*encoded))
        return std::nullopt;
    return FileData{*std::move(encoded), asPng ? "png" : "jpg"};
}

} // namespace tavel
