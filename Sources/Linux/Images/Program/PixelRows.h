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

/// Receives row `y`. Calls come one at a time, from the top down, but on different threads.
using RowConsumer = std::function<void(std::size_t y, const std::uint8_t* row)>;

/// Evaluates an image row by row. False if a part of it cannot be decoded, or not within the time limit.
bool forEachRow(VipsImage* image, const RowConsumer& consumer);

} // namespace tavel
