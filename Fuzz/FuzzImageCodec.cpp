#include "Fuzz/Fuzz.h"
#include "ImageHeaders/ImageHeader.h"
#include "Linux/Images/HeifBrand.h"
#include "Linux/Images/ImageExchange.h"
#include "Linux/Images/Program/Conversion.h"
#include "Linux/Images/Program/Preparation.h"

#include <ctime>
#include <memory>
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

/// The type of a picture that is read, and so what a conversion has to prepare.
std::optional<std::string_view> typeOf(const Bytes& file) {
    if (const auto header = readImageHeader(file.view()))
        return header->typeIdentifier;
    return heifTypeIdentifier(file.view());
}

std::optional<ImageSize> measure(const Bytes& file) {
    if (const auto header = readImageHeader(file.view()))
        return ImageSize{header->width, header->height};
    return measureImage(file);
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
    const auto type = typeOf(file);
    if (!type)
        return 0;
    require(prepareForType(*type));
    const auto dimensions = measure(file);
    require(!dimensions || (dimensions->width >= 1 && dimensions->height >= 1));
    if (!dimensions)
        return 0;
    static const auto room = std::make_unique_for_overwrite<char[]>(mostEncodedBytes);
    ImageOutput output({room.get(), mostEncodedBytes});
    const double start = processorSeconds();
    const bool isConverted = convertToPng(file, output);
    require(processorSeconds() - start <= mostSeconds);
    if (!isConverted)
        return 0;
    const Bytes png = Bytes::copyOf({output.written().data(), output.written().size()});
    const auto encoded = readImageHeader(png.view());
    require(encoded && isSameOrTurned({encoded->width, encoded->height}, *dimensions));
    require(encoded->typeIdentifier == "public.png");
    return 0;
}
