#pragma once

#include "Linux/Images/Program/VipsRuntime.h"

#include <cstddef>
#include <cstdint>
#include <functional>

namespace tavel {

/// The memory layout of an image's rows.
struct RowLayout {
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t bands = 0;      // 1 to 4
    std::size_t sampleSize = 0; // bytes: 1 or 2

    std::size_t pixelSize() const { return bands * sampleSize; }
    std::size_t rowSize() const { return width * pixelSize(); }
};

RowLayout rowLayout(const VipsImage* image);

/// Receives the next row; false ends the evaluation. Calls come one at a time, from the top down, but on
/// different threads. May throw std::bad_alloc.
using RowConsumer = std::function<bool(const std::uint8_t* row)>;

/// Evaluates an image row by row. False if a part of it cannot be decoded, or not within the time limit, or
/// if the consumer wants no more. Throws what the consumer throws.
bool forEachRow(VipsImage* image, const RowConsumer& consumer);

} // namespace tavel
