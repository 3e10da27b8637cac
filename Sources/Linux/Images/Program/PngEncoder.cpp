#include "Linux/Images/Program/PngEncoder.h"

#include "Linux/Images/Program/Palette.h"
#include "Linux/Images/Program/PixelRows.h"
#include "Linux/Images/Program/PngFile.h"

#include <array>
#include <memory>
#include <vector>

namespace tavel {
namespace {

/// The difference of each byte to that of the pixel on its left: fast, and effective on photographs.
/// bench/measure-images measures it.
constexpr std::uint8_t filterSub = 1;

PngHeader makeHeader(const RowLayout& layout, std::string_view profile) {
    constexpr std::array colours{PngColour::grey, PngColour::greyAlpha, PngColour::rgb, PngColour::rgba};
    PngHeader header;
    header.width = layout.width;
    header.height = layout.height;
    header.depth = static_cast<unsigned>(8 * layout.sampleSize);
    header.colour = colours[layout.bands - 1];
    header.profile = profile;
    return header;
}

void subtractLeft(const std::uint8_t* row, std::size_t size, std::size_t pixelSize, std::uint8_t* target) {
    for (std::size_t i = 0; i < pixelSize; ++i)
        target[i] = row[i];
    for (std::size_t i = pixelSize; i < size; ++i)
        target[i] = static_cast<std::uint8_t>(row[i] - row[i - pixelSize]);
}

/// Filters the rows of an image, as they arrive, into one buffer.
class RowFilter {
public:
    explicit RowFilter(const RowLayout& layout)
        : layout_(layout), swapped_(layout.sampleSize == 2 ? layout.rowSize() : 0),
          size_(layout.height * (1 + layout.rowSize())),
          filtered_(std::make_unique_for_overwrite<std::uint8_t[]>(size_)) {}

    void take(std::size_t y, const std::uint8_t* row) {
        std::uint8_t* const target = filtered_.get() + y * (1 + layout_.rowSize());
        target[0] = filterSub;
        subtractLeft(bigEndian(row), layout_.rowSize(), layout_.pixelSize(), target + 1);
    }

    std::span<const std::uint8_t> filtered() const { return {filtered_.get(), size_}; }

private:
    /// PNG stores the upper byte first; the processor stores the lower one first.
    const std::uint8_t* bigEndian(const std::uint8_t* row) {
        if (swapped_.empty())
            return row;
        for (std::size_t i = 0; i < swapped_.size(); i += 2) {
            swapped_[i] = row[i + 1];
            swapped_[i + 1] = row[i];
        }
        return swapped_.data();
    }

    RowLayout layout_;
    std::vector<std::uint8_t> swapped_;
    std::size_t size_;
    std::unique_ptr<std::uint8_t[]> filtered_; // a vector would first fill it with zeros
};

std::optional<Bytes> encodeFromMemory(VipsImage* image, const PngHeader& header) {
    const RowLayout layout = rowLayout(image);
    std::vector<std::uint8_t> pixels(layout.rowSize() * layout.height);
    const bool isComplete = forEachRow(image, [&](std::size_t y, const std::uint8_t* row) {
        std::copy_n(row, layout.rowSize(), pixels.data() + y * layout.rowSize());
    });
    if (!isComplete)
        return std::nullopt;
    if (const auto indexed = indexPixels(layout, pixels, header))
        return writePng(indexed->header, indexed->filtered);
    RowFilter filter(layout);
    for (std::size_t y = 0; y < layout.height; ++y)
        filter.take(y, pixels.data() + y * layout.rowSize());
    return writePng(header, filter.filtered());
}

} // namespace

std::optional<Bytes> encodeAsPng(const PlainPixels& pixels, bool mayHaveFewColours) {
    VipsImage* const image = pixels.image.get();
    const RowLayout layout = rowLayout(image);
    const PngHeader header = makeHeader(layout, pixels.profile);
    if (mayHaveFewColours && layout.sampleSize == 1)
        return encodeFromMemory(image, header);
    RowFilter filter(layout);
    if (!forEachRow(image, [&](std::size_t y, const std::uint8_t* row) { filter.take(y, row); }))
        return std::nullopt;
    return writePng(header, filter.filtered());
}

} // namespace tavel
