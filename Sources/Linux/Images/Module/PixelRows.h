#pragma once

#include "Linux/Images/Module/VipsRuntime.h"

#include <cstddef>
#include <cstdint>
#include <functional>

namespace tavel {

/// How the rows of an image lie in memory.
struct RowLayout {
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t bands = 0;      // 1 to 4
    std::size_t sampleSize = 0; // in bytes: 1 or 2

    std::size_t pixelSize() const { return bands * sampleSize; }
    std::size_t rowSize() const { return width * pixelSize(); }
};

RowLayout rowLayout(const VipsImage* image);

/// Takes row `y`. Called for one row after the other, from the top down, on threads that take turns.
using RowTaker = std::function<void(std::size_t y, const std::uint8_t* row)>;

/// Evaluates an image row by row. False if a part of it cannot be decoded, or not in reasonable time.
bool takeRows(VipsImage* image, const RowTaker& taker);

} // namespace tavel
