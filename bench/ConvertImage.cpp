// convert-image IN OUT.png|OUT.jpg|--measure: converts a picture, or only measures it, as the agent does.
// Prints the times of both steps and the peak memory of the process as JSON.

#include "Linux/Images/ProcessImageCodec.h"

#include <sys/resource.h>

#include <chrono>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

std::string readFile(const char* path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::optional<tavel::Bytes> convert(tavel::ImageCodec& codec, const tavel::Bytes& file,
                                    std::string_view target) {
    if (target == "--measure")
        return tavel::Bytes();
    return target.ends_with(".png") ? codec.encodePng(file) : codec.encodeJpeg(file, 0.82);
}

int run(const char* source, const std::string& target) {
    const tavel::Bytes file = tavel::Bytes::adopt(readFile(source));
    tavel::ProcessImageCodec codec([](const std::string& message) { std::cerr << message << '\n'; });

    const auto measuring = Clock::now();
    const auto size = codec.measure(file);
    const double measured = millisecondsSince(measuring);

    const auto converting = Clock::now();
    const auto result = convert(codec, file, target);
    const double converted = millisecondsSince(converting);
    if (!size || !result) {
        std::cerr << source << " cannot be converted\n";
        return 1;
    }
    if (!result->empty())
        std::ofstream(target, std::ios::binary)
            .write(result->data(), static_cast<std::streamsize>(result->size()));
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::cout << R"({"width":)" << size->width << R"(,"height":)" << size->height << R"(,"measure_ms":)"
              << measured << R"(,"convert_ms":)" << converted << R"(,"bytes":)" << result->size()
              << R"(,"peak_kib":)" << usage.ru_maxrss << "}\n";
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    if (count != 3) {
        std::cerr << "usage: convert-image IN OUT.png|OUT.jpg|--measure\n";
        return 2;
    }
    return run(arguments[1], arguments[2]);
}
