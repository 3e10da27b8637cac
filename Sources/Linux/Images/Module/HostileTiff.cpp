#include "ImageHeaders/ImageFields.h"
#include "Linux/Images/Module/HostileFiles.h"
#include "Linux/Images/Module/ImageSource.h"

#include <algorithm>
#include <string>

namespace tavel {
namespace {

/// More than any camera or program gives a pixel.
constexpr std::uint64_t mostSamples = 16;

struct Directory {
    ImageFields fields;
    bool isBig; // BigTIFF, whose numbers are longer
    std::uint64_t firstEntry;
    std::uint64_t count;

    std::uint64_t entrySize() const { return isBig ? 20 : 12; }
    std::uint64_t nextOffset() const { return firstEntry + count * entrySize(); }
    std::size_t nextSize() const { return isBig ? 8 : 4; }
};

/// The first directory of a file that readImageHeader takes for a TIFF, so its place and count are sound.
Directory firstDirectory(std::string_view file) {
    const ImageFields fields(file, file.starts_with("II") ? ByteOrder::littleEndian : ByteOrder::bigEndian);
    const bool isBig = fields.number(2, 2) == 43;
    const std::uint64_t offset = isBig ? fields.numberOrZero(8, 8) : fields.numberOrZero(4, 4);
    const std::size_t countSize = isBig ? 8 : 2;
    return {fields, isBig, offset + countSize, fields.numberOrZero(offset, countSize)};
}

/// The largest value that any entry of that tag gives, as far as it is a single number; or the default.
std::uint64_t largestValue(const Directory& directory, std::uint64_t tag, std::uint64_t defaultValue) {
    std::optional<std::uint64_t> largest;
    for (std::uint64_t i = 0; i < directory.count; ++i) {
        const std::uint64_t entry = directory.firstEntry + i * directory.entrySize();
        if (directory.fields.number(entry, 2) != tag)
            continue;
        const std::uint64_t type = directory.fields.numberOrZero(entry + 2, 2);
        const std::size_t size = type == 3 ? 2 : type == 16 ? 8 : 4;
        const std::uint64_t value = directory.fields.numberOrZero(entry + (directory.isBig ? 12 : 8), size);
        largest = std::max(largest.value_or(0), value);
    }
    return largest.value_or(defaultValue);
}

} // namespace

std::optional<Bytes> firstDirectoryOfTiff(const Bytes& file) {
    constexpr std::uint64_t tagSamples = 277;
    constexpr std::uint64_t tagTileWidth = 322;
    constexpr std::uint64_t tagTileLength = 323;
    const Directory directory = firstDirectory(file.view());
    const std::uint64_t tileWidth = std::max<std::uint64_t>(largestValue(directory, tagTileWidth, 1), 1);
    const std::uint64_t tileLength = largestValue(directory, tagTileLength, 1);
    if (largestValue(directory, tagSamples, 1) > mostSamples || tileLength > mostPixels / tileWidth)
        return std::nullopt;
    const auto next = directory.fields.number(directory.nextOffset(), directory.nextSize());
    if (!next || *next == 0)
        return file; // cut short, or the only one anyway
    std::string alone(file.view());
    alone.replace(static_cast<std::size_t>(directory.nextOffset()), directory.nextSize(),
                  directory.nextSize(), '\0');
    return Bytes::adopt(std::move(alone));
}

} // namespace tavel
