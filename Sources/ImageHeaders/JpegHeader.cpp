#include "ImageHeaders/ImageFields.h"

namespace tavel {
namespace {

constexpr std::uint64_t startOfScan = 0xDA;
constexpr std::uint64_t endOfImage = 0xD9;

/// SOF0 to SOF15 (ITU-T T.81, table B.1). Three codes in that range are other markers.
bool isFrameHeader(std::uint64_t marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

/// TEM, RST0 to RST7 and SOI have no length and no data.
bool standsAlone(std::uint64_t marker) {
    return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8);
}

std::optional<ImageHeader> readFrame(const ImageFields& fields, std::uint64_t segment, std::uint64_t length) {
    const auto components = fields.number(segment + 7, 1);
    if (!components || *components == 0 || length != 8 + 3 * *components ||
        !fields.number(segment + length - 1, 1))
        return std::nullopt;
    // A height of 0 means that a DNL segment after the first scan holds it. In practice no program writes or
    // reads that.
    return makeImageHeader("public.jpeg", fields.numberOrZero(segment + 5, 2),
                           fields.numberOrZero(segment + 3, 2));
}

} // namespace

std::optional<ImageHeader> readJpegHeader(std::string_view file) {
    if (!file.starts_with("\xFF\xD8\xFF"))
        return std::nullopt;
    const ImageFields fields(file, ByteOrder::bigEndian);
    std::uint64_t offset = 2;
    for (;;) {
        if (fields.number(offset, 1) != 0xFF)
            return std::nullopt;
        std::optional<std::uint64_t> marker;
        do // a marker may be preceded by any number of fill bytes
            marker = fields.number(++offset, 1);
        while (marker == 0xFF);
        ++offset;
        if (!marker || *marker == 0 || *marker == endOfImage || *marker == startOfScan)
            return std::nullopt;
        if (standsAlone(*marker))
            continue;
        const auto length = fields.number(offset, 2); // includes these two bytes
        if (!length || *length < 2)
            return std::nullopt;
        if (isFrameHeader(*marker))
            return readFrame(fields, offset, *length);
        offset += *length;
    }
}

} // namespace tavel
