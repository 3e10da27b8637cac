#pragma once

#include <cstddef>

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

} // namespace tavel
