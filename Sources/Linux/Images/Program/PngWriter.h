#pragma once

#include "Linux/Images/Program/ImageDataWriter.h"
#include "Linux/Images/Program/ImageOutput.h"
#include "Linux/Images/Program/Palette.h"
#include "Linux/Images/Program/PngFile.h"
#include "Linux/Images/Program/RowFilter.h"
#include "Linux/Images/Program/RowLayout.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace tavel {

/// Writes an image as a PNG file while its rows arrive. For one caller at a time.
class PngWriter {
public:
    /// The output and the ICC profile (none if empty) must outlive the writer. With `mayHaveFewColours`, an
    /// image of few colours becomes an indexed one, or one of fewer bits; up to a byte for each pixel is in
    /// memory until that is known. Throws std::bad_alloc.
    PngWriter(const RowLayout& layout, std::string_view profile, bool mayHaveFewColours, ImageOutput& output);

    /// Takes the next row: layout.rowSize() bytes, samples of 16 bits in the processor's byte order. False if
    /// the file does not fit into the output; the writer is of no use then. Throws std::bad_alloc.
    bool take(const std::uint8_t* row);

    /// Call once, after the last row. False if the file does not fit. Throws std::bad_alloc.
    bool finish();

private:
    bool writeRow(const std::uint8_t* row);
    bool writeHeldRows();
    bool writeIndexed(const PngHeader& header);

    RowLayout layout_;
    PngHeader header_;
    ImageOutput& output_;
    std::optional<IndexedRows> held_; // while there are few colours
    bool hasStarted_ = false;
    RowFilter filter_;
    ImageDataWriter data_;
};

} // namespace tavel
