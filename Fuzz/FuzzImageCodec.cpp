#include "Fuzz/Fuzz.h"
#include "Linux/Images/OnDemandImageCodec.h"

#include <ctime>
#include <string>

namespace tavel {
namespace {

/// For the largest picture. The time of the processor, because libFuzzer's limit counts the real time, which
/// another program may take.
constexpr double mostSeconds = 1;

double processorSeconds() {
    timespec time{};
    require(clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time) == 0);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

ImageCodec& codec() {
    static OnDemandImageCodec one([](const std::string&) { require(false); }); // the module is missing
    return one;
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
    const Bytes file = Bytes::copyOf(inputText(data, size));
    const auto dimensions = codec().measure(file);
    require(codec().typeIdentifier(file).has_value() == dimensions.has_value());
    require(!dimensions || (dimensions->width >= 1 && dimensions->height >= 1));
    if (!dimensions)
        return 0;
    const double start = processorSeconds();
    const auto png = codec().encodePng(file);
    require(processorSeconds() - start <= mostSeconds);
    if (!png)
        return 0;
    const auto encoded = codec().measure(*png);
    require(encoded && isSameOrTurned(*encoded, *dimensions));
    require(codec().typeIdentifier(*png) == "public.png");
    return 0;
}
