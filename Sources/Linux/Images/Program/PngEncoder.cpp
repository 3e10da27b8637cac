#include "Linux/Images/Program/PngEncoder.h"

#include "Linux/Images/Program/ImageDataWriter.h"
#include "Linux/Images/Program/Palette.h"
#include "Linux/Images/Program/PixelRows.h"
#include "Linux/Images/Program/PngFile.h"
#include "Linux/Images/Program/RowFilter.h"

#include <array>
#include <optional>
#include <vector>

namespace tavel {
namespace {

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

/// Turns rows into a PNG file as they arrive.
class PngEncoding {
public:
    PngEncoding(const RowLayout& layout, std::string_view profile, ImageOutput& output)
        : header_(makeHeader(layout, profile)), output_(output), filter_(layout), data_(output),
          row_(layout.rowSize()) {}

    /// Call one of these first. The first one holds the rows back until it is clear that there are many
    /// colours, or that there are no more rows.
    void startWithFewColours(const RowLayout& layout) { indexed_.emplace(layout); }
    bool start() { return writePngStart(header_, output_); }

    bool take(const std::uint8_t* row) {
        if (indexed_) {
            if (indexed_->take(row))
                return true;
            if (!writeTaken())
                return false;
        }
        return data_.append(filter_.filter(row));
    }

    bool finish() {
        if (indexed_) {
            const auto reduced = indexed_->describe(header_);
            if (!(reduced ? writeIndexed(*reduced) : writeTaken()))
                return false;
        }
        return data_.finish() && writePngEnd(output_);
    }

private:
    bool writeTaken() {
        bool isWritten = start();
        for (std::size_t y = 0; isWritten && y < indexed_->rows(); ++y) {
            indexed_->restore(y, row_.data());
            isWritten = data_.append(filter_.filter(row_.data()));
        }
        indexed_.reset();
        return isWritten;
    }

    bool writeIndexed(const PngHeader& header) {
        bool isWritten = writePngStart(header, output_);
        for (std::size_t y = 0; isWritten && y < indexed_->rows(); ++y)
            isWritten = data_.append(indexed_->pack(y));
        return isWritten;
    }

    PngHeader header_;
    ImageOutput& output_;
    RowFilter filter_;
    ImageDataWriter data_;
    std::optional<IndexedRows> indexed_;
    std::vector<std::uint8_t> row_;
};

} // namespace

bool encodeAsPng(const PlainPixels& pixels, bool mayHaveFewColours, ImageOutput& output) {
    VipsImage* const image = pixels.image.get();
    const RowLayout layout = rowLayout(image);
    PngEncoding encoding(layout, pixels.profile, output);
    if (mayHaveFewColours && IndexedRows::suit(layout))
        encoding.startWithFewColours(layout);
    else if (!encoding.start())
        return false;
    return forEachRow(image, [&](const std::uint8_t* row) { return encoding.take(row); }) &&
           encoding.finish();
}

} // namespace tavel
