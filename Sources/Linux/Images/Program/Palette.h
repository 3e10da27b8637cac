#pragma once

#include "Linux/Images/Program/PngFile.h"
#include "Linux/Images/Program/RowLayout.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

namespace tavel {

/// Up to four samples of 8 bits, the first one in the lowest bits.
using Colour = std::uint32_t;

/// Numbers the colours in the order of their first use.
class ColourTable {
public:
    explicit ColourTable(std::size_t capacity) : capacity_(capacity) {}

    /// The colour's number; nullopt if the table is full. Throws std::bad_alloc.
    std::optional<std::uint8_t> index(Colour colour);

    const std::vector<Colour>& colours() const { return colours_; }

private:
    std::size_t capacity_;
    std::vector<Colour> colours_;
    std::unordered_map<Colour, std::uint8_t> indices_;
};

/// Collects the rows of an image, a byte for each pixel, for as long as they can be represented in fewer
/// bits: up to 256 colours as indices into a palette, greys in 1, 2 or 4 bits.
class IndexedRows {
public:
    /// Whether PNG has such a form for these pixels.
    static bool suit(const RowLayout& layout);

    /// For a layout that they suit. Throws std::bad_alloc.
    explicit IndexedRows(const RowLayout& layout);

    /// Takes the next row. False if it has too many new colours; it is then not among the taken ones. Throws
    /// std::bad_alloc.
    bool take(const std::uint8_t* row);

    std::size_t rows() const { return indices_.size() / layout_.width; }

    /// Writes a taken row as it was: layout.rowSize() bytes.
    void restore(std::size_t y, std::uint8_t* row) const;

    /// Describes the taken rows in fewer bits; `header` describes them as they were. nullopt if only 8 bits
    /// represent the greys exactly. Throws std::bad_alloc.
    std::optional<PngHeader> describe(const PngHeader& header);

    /// The bytes of a taken row, in the form that `describe` has returned, after the filter type 0 (none):
    /// filters do not help, because neighbouring indices are unrelated. They stay valid until the next call.
    std::span<const std::uint8_t> pack(std::size_t y);

private:
    RowLayout layout_;
    ColourTable table_;
    std::vector<std::uint8_t> indices_;
    std::array<std::uint8_t, 256> samples_{}; // what stands for each index in the described form
    unsigned depth_ = 8;
    std::vector<std::uint8_t> packed_;
};

} // namespace tavel
