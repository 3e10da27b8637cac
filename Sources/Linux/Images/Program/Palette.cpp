#include "Linux/Images/Program/Palette.h"

#include <algorithm>
#include <unordered_map>

namespace tavel {
namespace {

/// Up to four samples of 8 bits, the first one in the lowest bits.
using Colour = std::uint32_t;

std::uint8_t sampleOf(Colour colour, std::size_t band) {
    return static_cast<std::uint8_t>(colour >> 8 * band);
}

/// Numbers the colours in the order of their first use.
class ColourTable {
public:
    explicit ColourTable(std::size_t capacity) : capacity_(capacity) {}

    /// The colour's number; nullopt if the table is full.
    std::optional<std::uint8_t> index(Colour colour) {
        const auto [entry, isNew] = indices_.try_emplace(colour, static_cast<std::uint8_t>(colours_.size()));
        if (isNew) {
            if (colours_.size() == capacity_)
                return std::nullopt;
            colours_.push_back(colour);
        }
        return entry->second;
    }

    const std::vector<Colour>& colours() const { return colours_; }

private:
    std::size_t capacity_;
    std::vector<Colour> colours_;
    std::unordered_map<Colour, std::uint8_t> indices_;
};

template <std::size_t Bands>
Colour colourAt(const std::uint8_t* sample) {
    Colour colour = 0;
    for (std::size_t band = 0; band < Bands; ++band)
        colour |= static_cast<Colour>(sample[band]) << 8 * band;
    return colour;
}

/// Looks each colour up once for all its neighbours to the right that are the same.
template <std::size_t Bands>
std::optional<std::vector<std::uint8_t>> indexAll(std::span<const std::uint8_t> pixels, ColourTable& table) {
    std::vector<std::uint8_t> indices(pixels.size() / Bands);
    const std::uint8_t* const samples = pixels.data();
    for (std::size_t i = 0; i < indices.size();) {
        const Colour colour = colourAt<Bands>(samples + i * Bands);
        const auto index = table.index(colour);
        if (!index)
            return std::nullopt;
        do
            indices[i++] = *index;
        while (i < indices.size() && colourAt<Bands>(samples + i * Bands) == colour);
    }
    return indices;
}

std::optional<std::vector<std::uint8_t>> indexAll(std::size_t bands, std::span<const std::uint8_t> pixels,
                                                  ColourTable& table) {
    switch (bands) {
    case 1:
        return indexAll<1>(pixels, table);
    case 3:
        return indexAll<3>(pixels, table);
    default:
        return indexAll<4>(pixels, table);
    }
}

/// The palette holds the red, green and blue samples, and `alphas` the fourth ones.
void describePalette(const std::vector<Colour>& colours, std::size_t bands, PngHeader& header) {
    for (const Colour colour : colours) {
        for (std::size_t i = 0; i < 3; ++i)
            header.palette += static_cast<char>(sampleOf(colour, i));
        if (bands == 4)
            header.alphas += static_cast<char>(sampleOf(colour, 3));
    }
    header.colour = PngColour::palette;
    header.depth = colours.size() <= 2 ? 1 : colours.size() <= 4 ? 2 : colours.size() <= 16 ? 4 : 8;
}

/// Chooses the smallest depth that represents the greys exactly, and replaces the indices by samples of that
/// depth. Its values are spread evenly from black to white. False if only 8 bits do.
bool describeGreys(const std::vector<Colour>& greys, PngHeader& header, std::vector<std::uint8_t>& indices) {
    for (const unsigned depth : {1U, 2U, 4U}) {
        const unsigned step = 255U / ((1U << depth) - 1U);
        if (!std::ranges::all_of(greys, [step](Colour grey) { return grey % step == 0; }))
            continue;
        header.depth = depth;
        for (std::uint8_t& index : indices)
            index = static_cast<std::uint8_t>(greys[index] / step);
        return true;
    }
    return false;
}

/// Packs the indices of each row, the leftmost into the upper bits, after the filter type 0 (none): filters
/// do not help, because neighbouring indices are unrelated.
std::vector<std::uint8_t> pack(const std::vector<std::uint8_t>& indices, const PngHeader& header) {
    std::vector<std::uint8_t> packed(filteredSize(header), 0);
    const std::size_t rowSize = packed.size() / header.height;
    const std::size_t perByte = 8 / header.depth;
    auto index = indices.begin();
    for (std::size_t y = 0; y < header.height; ++y) {
        std::uint8_t* const row = packed.data() + y * rowSize + 1;
        if (perByte == 1) {
            std::copy_n(index, header.width, row);
            index += static_cast<std::ptrdiff_t>(header.width);
            continue;
        }
        for (std::size_t x = 0; x < header.width; ++x) {
            const std::size_t shift = 8 - header.depth * (x % perByte + 1);
            row[x / perByte] = static_cast<std::uint8_t>(row[x / perByte] | *index++ << shift);
        }
    }
    return packed;
}

} // namespace

std::optional<IndexedPixels> indexPixels(const RowLayout& layout, std::span<const std::uint8_t> pixels,
                                         const PngHeader& header) {
    if (layout.bands == 2)
        return std::nullopt; // PNG has no smaller form of grey with alpha that stays grey
    const bool isGrey = layout.bands == 1;
    ColourTable table(isGrey ? 16 : 256);
    auto indices = indexAll(layout.bands, pixels, table);
    if (!indices)
        return std::nullopt;
    IndexedPixels result{header, {}};
    if (!isGrey)
        describePalette(table.colours(), layout.bands, result.header);
    else if (!describeGreys(table.colours(), result.header, *indices))
        return std::nullopt;
    result.filtered = pack(*indices, result.header);
    return result;
}

} // namespace tavel
