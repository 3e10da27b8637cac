#include "Linux/Images/Program/PngWriter.h"

#include <array>

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

} // namespace

PngWriter::PngWriter(const RowLayout& layout, std::string_view profile, bool mayHaveFewColours,
                     ImageOutput& output)
    : layout_(layout), header_(makeHeader(layout, profile)), output_(output), filter_(layout), data_(output) {
    if (mayHaveFewColours && IndexedRows::suit(layout))
        held_.emplace(layout);
}

bool PngWriter::take(const std::uint8_t* row) {
    if (held_ && held_->take(row))
        return true;
    return (!held_ || writeHeldRows()) && writeRow(row);
}

bool PngWriter::finish() {
    if (held_) {
        const auto reduced = held_->describe(header_);
        if (!(reduced ? writeIndexed(*reduced) : writeHeldRows()))
            return false;
    }
    return data_.finish() && writePngEnd(output_);
}

bool PngWriter::writeRow(const std::uint8_t* row) {
    if (!hasStarted_ && !writePngStart(header_, output_))
        return false;
    hasStarted_ = true;
    return data_.append(filter_.filter(row));
}

bool PngWriter::writeHeldRows() {
    std::vector<std::uint8_t> row(layout_.rowSize());
    bool isWritten = true;
    for (std::size_t y = 0; isWritten && y < held_->rows(); ++y) {
        held_->restore(y, row.data());
        isWritten = writeRow(row.data());
    }
    held_.reset();
    return isWritten;
}

bool PngWriter::writeIndexed(const PngHeader& header) {
    bool isWritten = writePngStart(header, output_);
    for (std::size_t y = 0; isWritten && y < held_->rows(); ++y)
        isWritten = data_.append(held_->pack(y));
    return isWritten;
}

} // namespace tavel
