#include "Linux/Images/HeifBrand.h"

#include "ImageHeaders/ImageFields.h"

#include <algorithm>
#include <array>

namespace tavel {
namespace {

struct Brand {
    std::string_view name;
    std::string_view typeIdentifier;
};

/// ISO/IEC 23008-12 and the AV1 image file format. A file may name several brands, so the order here is that
/// of preference: the general brands come last.
constexpr std::array brands{
    Brand{"avif", "public.avif"}, Brand{"avis", "public.avif"}, Brand{"heic", "public.heic"},
    Brand{"heix", "public.heic"}, Brand{"heim", "public.heic"}, Brand{"heis", "public.heic"},
    Brand{"hevc", "public.heic"}, Brand{"hevx", "public.heic"}, Brand{"mif1", "public.heif"},
    Brand{"msf1", "public.heif"},
};

} // namespace

std::optional<std::string_view> heifTypeIdentifier(std::string_view file) {
    constexpr std::size_t brandStart = 8;
    constexpr std::size_t compatibleStart = 16; // after the major brand and its version
    constexpr std::uint64_t maxBoxSize = 1024;  // room for far more brands than files name
    const auto boxSize = ImageFields(file, ByteOrder::bigEndian).number(0, 4);
    if (!boxSize || *boxSize < compatibleStart ||
        *boxSize > std::min<std::uint64_t>(file.size(), maxBoxSize) || file.substr(4, 4) != "ftyp")
        return std::nullopt;
    const std::string_view box = file.substr(0, static_cast<std::size_t>(*boxSize));
    const auto names = [box](std::string_view brand) {
        if (box.substr(brandStart, 4) == brand)
            return true;
        for (std::size_t offset = compatibleStart; offset + 4 <= box.size(); offset += 4) {
            if (box.substr(offset, 4) == brand)
                return true;
        }
        return false;
    };
    const auto* const found =
        std::find_if(brands.begin(), brands.end(), [&](const Brand& brand) { return names(brand.name); });
    if (found == brands.end())
        return std::nullopt;
    return found->typeIdentifier;
}

} // namespace tavel
