#pragma once

#include "Linux/Images/Program/RowLayout.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tavel {

/// Filters the rows of an image for PNG (PNG, third edition, clause 9), from the top down. For one thread at
/// a time.
class RowFilter {
public:
    /// Throws std::bad_alloc.
    explicit RowFilter(const RowLayout& layout);

    /// The filter type and the filtered bytes of the next row. They stay valid until the next call. Allocates
    /// nothing.
    std::span<const std::uint8_t> filter(const std::uint8_t* row) noexcept;

private:
    void load(const std::uint8_t* row);
    std::uint8_t chooseType();
    void subtract(std::uint8_t type, std::size_t from, std::size_t to);

    RowLayout layout_;
    // Each has a pixel of zeros on its left, as the filters want it.
    std::vector<std::uint8_t> row_;
    std::vector<std::uint8_t> above_;
    std::vector<std::uint8_t> filtered_;
};

} // namespace tavel
