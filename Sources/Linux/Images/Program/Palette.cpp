#include "Linux/Images/Program/Palette.h"

#include <algorithm>
#include <numeric>

namespace tavel {
namespace {

constexpr std::size_t mostColours = 256;
constexpr std::size_t mostGreys = 16;

std::uint8_t sampleOf(Colour colour, std::size_t band) {
    return static_cast<std::uint8_t>(colour >> 8 * band);
}

template <std::size_t Bands>
Colour colourAt(const std::uint8_t* sample) {
    Colour colour = 0;
    for (std::size_t band = 0; band < Bands; ++band)
        colour |= static_cast<Colour>(sample[band]) << 8 * band;
    return colour;
}

/// Looks each colour up once for all its neighbours to the right that are the same.
template <std::size_t Bands>
bool indexRow(const std::uint8_t* row, std::span<std::uint8_t> indices, ColourTable& table) {
    for (std::size_t i = 0; i < indices.size();) {
        const Colour colour = colourAt<Bands>(row + i * Bands);
        const auto index = table.index(colour);
        if (!index)
            return false;
        do
            indices[i++] = *index;
        while (i < indices.size() && colourAt<Bands>(row + i * Bands) == colour);
    }
    return true;
}

bool indexRow(std::size_t bands, const std::uint8_t* row, std::span<std::uint8_t> indices,
              ColourTable& table) {
    switch (bands) {
    case 1:
        return indexRow<1>(row, indices, table);
    case 3:
        return indexRow<3>(row, indices, table);
    default:
        return indexRow<4>(row, indices, table);
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

/// The values of a depth are multiples of this one, spread evenly from black to white.
unsigned greyStep(unsigned depth) {
    return 255U / ((1U << depth) - 1U);
}

/// The smallest depth that represents the greys exactly.
unsigned depthOfGreys(const std::vector<Colour>& greys) {
    for (const unsigned depth : {1U, 2U, 4U}) {
        const unsigned step = greyStep(depth);
        if (std::ranges::all_of(greys, [step](Colour grey) { return grey % step == 0; }))
            return depth;
    }
    return 8;
}

} // namespace

std::optional<std::uint8_t> ColourTable::index(Colour colour) {
    const auto [entry, isNew] = indices_.try_emplace(colour, static_cast<std::uint8_t>(colours_.size()));
    if (isNew) {
        if (colours_.size() == capacity_)
            return std::nullopt;
        colours_.push_back(colour);
    }
    return entry->second;
}

bool IndexedRows::suit(const RowLayout& layout) {
    return layout.sampleSize == 1 && layout.bands != 2; // there is no grey with alpha in fewer bits
}

IndexedRows::IndexedRows(const RowLayout& layout)
    : layout_(layout), table_(layout.bands == 1 ? mostGreys : mostColours) {
    indices_.reserve(layout.width * layout.height); // becomes memory as it is filled
}

bool IndexedRows::take(const std::uint8_t* row) {
    const std::size_t start = indices_.size();
    indices_.resize(start + layout_.width);
    if (indexRow(layout_.bands, row, std::span(indices_).subspan(start), table_))
        return true;
    indices_.resize(start);
    return false;
}

void IndexedRows::restore(std::size_t y, std::uint8_t* row) const {
    const std::uint8_t* const indices = indices_.data() + y * layout_.width;
    for (std::size_t x = 0; x < layout_.width; ++x) {
        for (std::size_t band = 0; band < layout_.bands; ++band)
            *row++ = sampleOf(table_.colours()[indices[x]], band);
    }
}

std::optional<PngHeader> IndexedRows::describe(const PngHeader& header) {
    const std::vector<Colour>& colours = table_.colours();
    PngHeader result = header;
    if (layout_.bands == 1) {
        result.depth = depthOfGreys(colours);
        if (result.depth == header.depth)
            return std::nullopt;
        std::ranges::transform(colours, samples_.begin(), [&](Colour grey) {
            return static_cast<std::uint8_t>(grey / greyStep(result.depth));
        });
    } else {
        describePalette(colours, layout_.bands, result);
        std::iota(samples_.begin(), samples_.end(), std::uint8_t{0});
    }
    depth_ = result.depth;
    packed_.resize(1 + (layout_.width * depth_ + 7) / 8);
    return result;
}

/// The leftmost index is in the upper bits of a byte.
std::span<const std::uint8_t> IndexedRows::pack(std::size_t y) {
    const std::uint8_t* const indices = indices_.data() + y * layout_.width;
    const std::size_t perByte = 8 / depth_;
    std::ranges::fill(packed_, std::uint8_t{0});
    for (std::size_t x = 0; x < layout_.width; ++x) {
        const std::size_t shift = 8 - depth_ * (x % perByte + 1);
        std::uint8_t& byte = packed_[1 + x / perByte];
        byte = static_cast<std::uint8_t>(byte | samples_[indices[x]] << shift);
    }
    return packed_;
}

} // namespace tavel
