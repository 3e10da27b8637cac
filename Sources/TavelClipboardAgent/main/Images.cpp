#include "TavelClipboardAgent/main/Images.h"

#include "Platform/PasteboardTypes.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"
#include "TavelClipboardAgent/main/Limits.h"

#include <algorithm>
#include <iterator>

namespace tavel {

std::vector<std::string_view> offeredPlainPictures(std::span<const std::string> types) {
    std::vector<std::string_view> offered;
    std::ranges::copy_if(plainPictureTypes, std::back_inserter(offered),
                         [&](std::string_view type) { return pasteboardType::isOffered(types, type); });
    return offered;
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
