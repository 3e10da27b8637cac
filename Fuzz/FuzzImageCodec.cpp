#include "Fuzz/Fuzz.h"
#include "Linux/Images/OnDemandImageCodec.h"

#include <string>

namespace tavel {
namespace {

constexpr std::size_t largestInput = std::size_t{1} << 20;
/// Larger pictures only take longer.
constexpr std::int64_t mostPixels = 1'000'000;

ImageCodec& codec() {
    static OnDemandImageCodec one([](const std::string&) { require(false); }); // it has no module to load
    return one;
}

bool isSmall(const ImageSize& size) {
    return size.width <= mostPixels && size.height <= mostPixels / size.width;
}

/// A picture may be turned while it is read.
bool isSameOrTurned(const ImageSize& one, const ImageSize& other) {
    return (one.width == other.width && one.height == other.height) ||
           (one.width == other.height && one.height == other.width);
}

} // namespace
} // namespace tavel

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavel;
    if (size > largestInput)
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
