#include "Fuzz/Fuzz.h"
#include "Linux/Images/OnDemandImageCodec.h"

#include <string>

namespace tavel {
namespace {

constexpr std::size_t maxInputSize = std::size_t{1} << 20;
/// Larger pictures only slow the fuzzer down.
constexpr std::int64_t maxPixels = 1'000'000;

ImageCodec& codec() {
    static OnDemandImageCodec one([](const std::string&) { require(false); }); // the module is missing
    return one;
}

bool isSmall(const ImageSize& size) {
    return size.width <= maxPixels && size.height <= maxPixels / size.width;
}

/// The decoder may rotate a picture.
bool isSameOrTurned(const ImageSize& one, const ImageSize& other) {
    return (one.width == other.width && one.height == other.height) ||
           (one.width == other.height && one.height == other.width);
}

} // namespace
} // namespace tavel

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavel;
    if (size > maxInputSize)
        return 0;
    const Bytes file = Bytes::copyOf(inputText(data, size));
    const auto dimensions = codec().measure(file);
    require(codec().typeIdentifier(file).has_value() == dimensions.has_value());
    require(!dimensions || (dimensions->width >= 1 && dimensions->height >= 1));
    if (!dimensions || !isSmall(*dimensions))
        return 0;
    const auto png = codec().encodePng(file);
    if (!png)
        return 0;
    const auto encoded = codec().measure(*png);
    require(encoded && isSameOrTurned(*encoded, *dimensions));
    require(codec().typeIdentifier(*png) == "public.png");
    return 0;
}
