// convert-here IN OUT.png|OUT.jpg: converts a picture twice in this process, as the program tavel-images
// does, but without its start and its lock. Prints as JSON the time of the second conversion, to which the
// first one has brought all that it needs.

#include "ImageHeaders/ImageHeader.h"
#include "Linux/Images/HeifBrand.h"
#include "Linux/Images/ImageExchange.h"
#include "Linux/Images/Program/Conversion.h"
#include "Linux/Images/Program/Preparation.h"

#include <chrono>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>

namespace {

using Clock = std::chrono::steady_clock;

tavel::Bytes readFile(const char* path) {
    std::ifstream stream(path, std::ios::binary);
    return tavel::Bytes::adopt({std::istreambuf_iterator<char>(stream), {}});
}

int run(const char* source, std::string_view target) {
    const tavel::Bytes file = readFile(source);
    const auto header = tavel::readImageHeader(file.view());
    const auto type = header ? std::optional(header->typeIdentifier) : tavel::heifTypeIdentifier(file.view());
    bool isDone = type && tavel::prepareForType(*type);
    const auto room = std::make_unique<char[]>(tavel::mostEncodedBytes);
    Clock::time_point start;
    for (int round = 0; round < 2 && isDone; ++round) {
        tavel::ImageOutput output({room.get(), tavel::mostEncodedBytes});
        start = Clock::now();
        isDone = target.ends_with(".png") ? tavel::convertToPng(file, output)
                                          : tavel::convertToJpeg(file, 0.82, output);
    }
    const std::chrono::duration<double, std::milli> taken = Clock::now() - start;
    if (!isDone) {
        std::cerr << source << " cannot be converted\n";
        return 1;
    }
    std::cout << R"({"convert_ms":)" << taken.count() << "}\n";
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    if (count != 3) {
        std::cerr << "usage: convert-here IN OUT.png|OUT.jpg\n";
        return 2;
    }
    return run(arguments[1], arguments[2]);
}
