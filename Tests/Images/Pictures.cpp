#include "Tests/Images/Pictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace tavel {

ProcessImageCodec& codec() {
    static ProcessImageCodec shared([](const std::string& message) { ADD_FAILURE() << message; });
    return shared;
}

std::string readPicture(const std::string& name) {
    std::ifstream stream(std::filesystem::path(TAVEL_TEST_PICTURES) / name, std::ios::binary);
    if (!stream)
        throw std::runtime_error("make-pictures has not made " + name);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<std::uint16_t> readPixels(const std::string& name) {
    const std::string bytes = readPicture(name + ".rgba");
    std::vector<std::uint16_t> pixels(bytes.size() / 2);
    std::memcpy(pixels.data(), bytes.data(), bytes.size());
    return pixels;
}

std::optional<DecodedPng> throughPng(std::string_view file) {
    const auto png = codec().encodePng(Bytes::copyOf(file));
    return png ? decodePng(png->view()) : std::nullopt;
}

Distance distance(const std::vector<std::uint16_t>& one, const std::vector<std::uint16_t>& other) {
    if (one.size() != other.size())
        throw std::runtime_error("pictures of different sizes");
    Distance result;
    for (std::size_t i = 0; i < one.size(); ++i) {
        const std::size_t alpha = i | 3;
        if (one[alpha] == 0 && other[alpha] == 0)
            continue;
        const int difference = std::abs(one[i] - other[i]);
        result.mean += difference;
        result.largest = std::max(result.largest, difference);
    }
    result.mean /= static_cast<double>(one.size());
    return result;
}

bool isMapped(const std::string& name) {
    std::ifstream maps("/proc/self/maps");
    std::string line;
    while (std::getline(maps, line)) {
        if (line.find(name) != std::string::npos)
            return true;
    }
    return false;
}

} // namespace tavel
