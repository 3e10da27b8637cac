#include "Fuzz/Fuzz.h"
#include "ImageHeaders/ImageHeader.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavel;
    const std::string_view file = inputText(data, size);
    const auto header = readImageHeader(file);
    if (!header)
        return 0;
    require(header->typeIdentifier.find('.') != std::string_view::npos);
    require(header->width >= 1 && header->width <= INT64_C(0xFFFFFFFF));
    require(header->height >= 1 && header->height <= INT64_C(0xFFFFFFFF));

    // Bytes after the end of the file do not matter.
    const auto longer = readImageHeader(std::string(file) + '\0');
    require(longer && longer->typeIdentifier == header->typeIdentifier && longer->width == header->width &&
            longer->height == header->height);
    return 0;
}
