#include "Tests/Images/Pictures.h"
#include "Tests/Unit/Fixtures/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace tavel {
namespace {

/// One file for each encoding of each format.
const std::vector<std::string> files{
    "jpeg-baseline.jpg", "jpeg-progressive.jpg", "gif-static.gif", "gif-interlaced.gif", "tiff-LZW.tif",
    "tiff-Zip.tif",      "tiff-tiles.tif",       "tiff-JPEG.tif",  "webp-lossy.webp",    "webp-lossless.webp",
    "webp-alpha.webp",   "bmp-24.bmp",           "bmp-rle.bmp",    "heif-avif.avif",     "heif-heic.heic"};

/// Every size below 64, and then every multiple of 1024.
std::set<std::size_t> cuts(std::size_t size) {
    std::set<std::size_t> places;
    for (std::size_t place = 0; place < std::min<std::size_t>(size, 64); ++place)
        places.insert(place);
    for (std::size_t place = 1024; place < size; place += 1024)
        places.insert(place);
    return places;
}

TEST(BrokenImage, givesNothingWhenPixelsAreMissing) {
    for (const std::string& name : files) {
        const std::string file = readPicture(name);
        ASSERT_TRUE(throughPng(file)) << name;
        for (const std::size_t size : cuts(file.size())) {
            const auto png = throughPng(std::string_view(file).substr(0, size));
            EXPECT_FALSE(png) << name << " cut from " << file.size() << " to " << size;
        }
    }
}

TEST(BrokenImage, givesNoJpegWhenPixelsAreMissing) {
    const std::vector<std::string> names{"png-6-8.png", "png-interlaced.png", "tiff-None.tif", "bmp-24.bmp"};
    for (const std::string& name : names) {
        const std::string file = readPicture(name);
        for (const std::size_t part : {1U, 3U, 5U, 7U}) {
            const Bytes cut = Bytes::copyOf(file).slice(0, file.size() * part / 8);
            EXPECT_FALSE(codec().encodeJpeg(cut, 0.8)) << name << ", " << part << " eighths";
        }
    }
}

TEST(BrokenImage, survivesFlippedBits) {
    Random random(2);
    for (const std::string& name : files) {
        const std::string file = readPicture(name);
        for (int round = 0; round < 20; ++round) { // the fuzzer runs many more, in one process
            std::string changed = file;
            // In turns: within the headers, and anywhere.
            const std::size_t place =
                random.below(round % 2 == 0 ? std::min<std::size_t>(file.size(), 256) : file.size());
            changed[place] = static_cast<char>(changed[place] ^ 1 << random.below(8));
            const Bytes bytes = Bytes::adopt(changed);
            const auto size = codec().measure(bytes);
            const auto result = codec().encodePng(bytes);
            if (!result)
                continue;
            const auto png = decodePng(result->view());
            ASSERT_TRUE(png) << name << ", " << place;
            ASSERT_TRUE(size) << name << ", " << place;
            EXPECT_EQ(png->width, size->width) << name << ", " << place;
            EXPECT_EQ(png->height, size->height) << name << ", " << place;
        }
    }
}

} // namespace
} // namespace tavel
