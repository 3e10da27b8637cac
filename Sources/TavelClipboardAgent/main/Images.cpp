#include "TavelClipboardAgent/main/Images.h"

#include "Platform/PasteboardTypes.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"
#include "TavelClipboardAgent/main/Limits.h"

namespace tavel {

std::optional<Bytes> plainPicture(Pasteboard& pasteboard, std::span<const std::string> types) {
    std::optional<Bytes> picture;
    for (const std::string_view type : plainPictureTypes) {
        if (!picture && pasteboardType::isOffered(types, type))
            picture = pasteboard.data(type, maximumImageBytes);
    }
    return picture;
}

bool validImage(ImageCodec& codec, const Bytes& data) {
    const auto size = codec.measure(data);
    if (!size || size->width < 1 || size->height < 1)
        return false;
    return size->width <= maximumImagePixels / size->height; // the product could overflow
}

std::optional<Bytes> pngImage(ImageCodec& codec, const Bytes& data) {
    if (!validImage(codec, data))
        return std::nullopt;
    if (codec.typeIdentifier(data) == pasteboardType::png)
        return data;
    return codec.encodePng(data);
}

} // namespace tavel
