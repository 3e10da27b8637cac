#include "PlatformImages/Module/Palette.h"

#include <algorithm>
#include <array>
#include <unordered_map>

namespace tavel {
namespace {

/// Samples in memory order, those that are missing 0.
using Colour = std::array<std::uint8_t, 4>;

/// Numbers the colours in the order in which they turn up.
class ColourTable {
public:
    explicit ColourTable(std::size_t most) : most_(most) {}

    /// Nothing once there are too many.
    std::optional<std::uint8_t> index(const Colour& colour) {
        if (!colours_.empty() && colour == last_)
            return lastIndex_;
        const std::uint32_t key =
            static_cast<std::uint32_t>(colour[0]) | static_cast<std::uint32_t>(colour[1]) << 8 |
            static_cast<std::uint32_t>(colour[2]) << 16 | static_cast<std::uint32_t>(colour[3]) << 24;
        const auto [entry, isNew] = indices_.try_emplace(key, static_cast<std::uint8_t>(colours_.size()));
        if (isNew) {
            if (colours_.size() == most_)
                return std::nullopt;
            colours_.push_back(colour);
        }
        last_ = colour;
        lastIndex_ = entry->second;
        return lastIndex_;
    }

    const std::vector<Colour>& colours() const { return colours_; }

private:
    std::size_t most_;
    std::vector<Colour> colours_;
    std::unordered_map<std::uint32_t, std::uint8_t> indices_;
    Colour last_{};
    std::uint8_t lastIndex_ = 0;
};

std::optional<std::vector<std::uint8_t>> indexAll(const RowLayout& layout,
                                                  std::span<const std::uint8_t> pixels, ColourTable& table) {
    std::vector<std::uint8_t> indices(layout.width * layout.height);
    const std::uint8_t* sample = pixels.data();
    Colour colour{};
    for (std::uint8_t& target : indices) {
        std::copy_n(sample, layout.bands, colour.begin());
        sample += layout.bands;
        const auto index = table.index(colour);
        if (!index)
            return std::nullopt;
        target = *index;
    }
    return indices;
}

/// The palette is in RGB; grey stands for three equal samples, and what follows the colours is alpha.
void describePalette(const std::vector<Colour>& colours, std::size_t bands, PngHeader& header) {
    const bool isGrey = bands < 3;
    const bool hasAlpha = bands == 2 || bands == 4;
    for (const Colour& colour : colours) {
        for (std::size_t i = 0; i < 3; ++i)
            header.palette += static_cast<char>(colour[isGrey ? 0 : i]);
        if (hasAlpha)
            header.alphas += static_cast<char>(colour[bands - 1]);
    }
    header.colour = PngColour::palette;
    header.depth = colours.size() <= 2 ? 1 : colours.size() <= 4 ? 2 : colours.size() <= 16 ? 4 : 8;
}

/// Packs the indices, the leftmost into the upper bits, behind the filter 0: indices of neighbours say
/// nothing about each other.
std::vector<std::uint8_t> pack(const std::vector<std::uint8_t>& indices, const PngHeader& header) {
    std::vector<std::uint8_t> packed(filteredSize(header), 0);
    const std::size_t rowSize = packed.size() / header.height;
    const std::size_t perByte = 8 / header.depth;
    auto index = indices.begin();
    for (std::size_t y = 0; y < header.height; ++y) {
        std::uint8_t* const row = packed.data() + y * rowSize + 1;
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
    const std::size_t most = layout.bands == 1 ? 16 : 256;
    ColourTable table(most);
    const auto indices = indexAll(layout, pixels, table);
    if (!indices)
        return std::nullopt;
    IndexedPixels result{header, {}};
    describePalette(table.colours(), layout.bands, result.header);
    result.filtered = pack(*indices, result.header);
    return result;
}

} // namespace tavel
