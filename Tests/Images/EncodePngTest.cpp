#include "Tests/Images/Pictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace tavel {
namespace {

constexpr int step8 = 257; // one 8-bit step in 16-bit steps

/// The expected result: no sample differs from the source by more than `largest`, and all samples differ by
/// at most `mean` on average, both in 16-bit steps.
struct Expectation {
    std::string name;
    int depth;
    int largest = 0;
    double mean = largest;
};

void expectPicture(const Expectation& expected) {
    SCOPED_TRACE(expected.name);
    const auto png = throughPng(readPicture(expected.name));
    ASSERT_TRUE(png);
    EXPECT_EQ(png->width, pictureWidth);
    EXPECT_EQ(png->height, pictureHeight);
    EXPECT_EQ(png->depth, expected.depth);
    const Distance apart = distance(png->pixels, readPixels(expected.name));
    EXPECT_LE(apart.largest, expected.largest);
    EXPECT_LE(apart.mean, expected.mean);
}

/// The profile of a JPEG that holds it in a single segment.
std::string profileOfJpeg(const std::string& file) {
    const std::size_t name = file.find(std::string("ICC_PROFILE\0\1\1", 14));
    if (name == std::string::npos)
        return {};
    const auto octet = [&](std::size_t i) { return std::size_t{static_cast<unsigned char>(file[i])}; };
    return file.substr(name + 14, (octet(name - 2) << 8 | octet(name - 1)) - 16);
}

TEST(EncodePng, encodesPngFilesAnew) {
    for (const std::string type : {"0-1", "0-2", "0-4", "0-8", "0-16", "2-8", "2-16", "3-1", "3-2", "3-4",
                                   "3-8", "4-8", "4-16", "6-8", "6-16", "interlaced"}) {
        const std::string name = "png-" + type + ".png";
        const auto png = throughPng(readPicture(name) + "what is behind the picture");
        ASSERT_TRUE(png) << type;
        EXPECT_EQ(distance(png->pixels, readPixels(name)).largest, 0) << type;
    }
    const auto png = codec().encodePng(Bytes::copyOf(readPicture("png-2-8.png") + "behind"));
    ASSERT_TRUE(png);
    EXPECT_EQ(png->view().find("behind"), std::string_view::npos);
}

TEST(EncodePng, keepsThePixelsOfJpegs) {
    for (const std::string name : {"baseline", "444", "progressive", "grey", "profile"})
        expectPicture({"jpeg-" + name + ".jpg", 8, step8});
}

TEST(EncodePng, keepsGreyGrey) {
    EXPECT_EQ(throughPng(readPicture("jpeg-grey.jpg"))->colourType, 0);
    EXPECT_EQ(throughPng(readPicture("tiff-grey.tif"))->colourType, 0);
    EXPECT_EQ(throughPng(readPicture("tiff-deep-grey.tif"))->colourType, 0);
}

TEST(EncodePng, saysGreysInAsFewBitsAsSayThemExactly) {
    for (const auto& [name, depth] : {std::pair("tiff-bilevel.tif", 1), std::pair("tiff-grey-four.tif", 2),
                                      std::pair("tiff-grey-uneven.tif", 8), std::pair("tiff-grey.tif", 8)}) {
        SCOPED_TRACE(name);
        const auto png = throughPng(readPicture(name));
        ASSERT_TRUE(png);
        EXPECT_EQ(png->colourType, 0);
        EXPECT_EQ(png->depth, depth);
        EXPECT_EQ(distance(png->pixels, readPixels(name)).largest, 0);
    }
}

TEST(EncodePng, turnsCmykIntoTheColoursThatWerePrinted) {
    // ImageMagick converts from 16 bits, so two roundings differ.
    for (const std::string name : {"jpeg-cmyk.jpg", "jpeg-cmyk-bare.jpg", "tiff-cmyk.tif"}) {
        expectPicture({name, 8, 8 * step8, 1.0 * step8});
        EXPECT_EQ(throughPng(readPicture(name))->profile, "") << name;
    }
}

TEST(EncodePng, keepsProfiles) {
    const std::string jpeg = readPicture("jpeg-profile.jpg");
    const std::string profile = profileOfJpeg(jpeg);
    ASSERT_GT(profile.size(), 128U);
    EXPECT_TRUE(throughPng(jpeg)->profile == profile);
    EXPECT_TRUE(throughPng(readPicture("tiff-profile.tif"))->profile == profile) << "the same one";
    EXPECT_EQ(throughPng(readPicture("jpeg-baseline.jpg"))->profile, "");
}

TEST(EncodePng, doesNotTurnPictures) {
    // A directory with one entry: orientation 6, a rotation by 90 degrees.
    const std::string segment("\xFF\xE1\0\x22"
                              "Exif\0\0"
                              "MM\0*\0\0\0\x08"
                              "\0\x01\x01\x12\0\x03\0\0\0\x01\0\x06\0\0\0\0\0\0",
                              36);
    const std::string upright = readPicture("jpeg-baseline.jpg");
    const std::string turned = upright.substr(0, 2) + segment + upright.substr(2);
    const auto png = codec().encodePng(Bytes::copyOf(turned));
    ASSERT_TRUE(png);
    EXPECT_TRUE(png->view() == codec().encodePng(Bytes::copyOf(upright))->view());
    expectPicture({"tiff-orientation.tif", 8});
}

TEST(EncodePng, keepsThePixelsOfGifs) {
    expectPicture({"gif-static.gif", 4});
    expectPicture({"gif-interlaced.gif", 4});
    expectPicture({"gif-animated.gif", 4});
    expectPicture({"gif-transparent.gif", 8});
}

TEST(EncodePng, keepsAGifsScreen) {
    // Some readers take this size for a mistake. The frame covers only a part of the screen.
    const auto png = throughPng(readPicture("gif-screen.gif"));
    ASSERT_TRUE(png);
    ASSERT_EQ(png->width, 640U);
    ASSERT_EQ(png->height, 480U);
    const auto frame = readPixels("colours.png");
    const std::size_t left = std::size_t{4} * (480 - 1) * 640;
    EXPECT_EQ(png->pixels[3], 0) << "transparent where no frame is";
    EXPECT_EQ(png->pixels[left + 3], 0);
    EXPECT_EQ(png->pixels[std::size_t{4} * (7 * 640 + 4) + 3], 0) << "to the left of the frame";
    const std::size_t first = std::size_t{4} * (7 * 640 + 5);
    EXPECT_TRUE(std::equal(frame.begin(), frame.begin() + 4 * pictureWidth, png->pixels.begin() + first));
}

TEST(EncodePng, keepsThePixelsOfTiffs) {
    for (const std::string name :
         {"None", "LZW", "Zip", "RLE", "msb", "alpha", "tiles", "big", "pages", "profile"})
        expectPicture({"tiff-" + name + ".tif", 8});
    expectPicture({"tiff-JPEG.tif", 8, 2 * step8});
    expectPicture({"tiff-grey.tif", 8});
    expectPicture({"tiff-palette.tif", 4});
    expectPicture({"tiff-bilevel.tif", 1});
}

TEST(EncodePng, keepsDepth) {
    expectPicture({"tiff-deep.tif", 16});
    expectPicture({"tiff-deep-grey.tif", 16});
    expectPicture({"tiff-long.tif", 16, 1});
}

TEST(EncodePng, bringsOtherNumbersToSixteenBits) {
    // 8 bits, converted to real numbers and back.
    expectPicture({"tiff-float.tif", 16, step8});
    expectPicture({"tiff-float-grey.tif", 16, step8});
    expectPicture({"tiff-lab.tif", 16, 3 * step8});
}

TEST(EncodePng, keepsThePixelsOfWebps) {
    for (const std::string name : {"lossy", "lossless", "alpha", "lossless-alpha"})
        expectPicture({"webp-" + name + ".webp", 8});
    expectPicture({"webp-animated.webp", 4});
}

TEST(EncodePng, keepsThePixelsOfBmps) {
    expectPicture({"bmp-1.bmp", 1});
    expectPicture({"bmp-4.bmp", 4});
    for (const std::string name : {"8", "rle", "24", "core", "32"})
        expectPicture({"bmp-" + name + ".bmp", 8});
    expectPicture({"bmp-16.bmp", 8, 8 * step8}); // decoders expand five bits in different ways
}

TEST(EncodePng, readsHeifAndAvif) {
    // Lossy, with chroma at half the resolution.
    expectPicture({"heif-avif.avif", 8, 65'535, 6.0 * step8});
    expectPicture({"heif-heic.heic", 8, 65'535, 6.0 * step8});
    EXPECT_EQ(codec().typeIdentifier(Bytes::copyOf(readPicture("heif-avif.avif"))), "public.avif");
    EXPECT_EQ(codec().typeIdentifier(Bytes::copyOf(readPicture("heif-heic.heic"))), "public.heic");
}

TEST(EncodePng, measuresWhatItDecodes) {
    for (const std::string name :
         {"jpeg-progressive.jpg", "gif-animated.gif", "tiff-pages.tif", "tiff-big.tif", "webp-lossy.webp",
          "webp-lossless.webp", "webp-alpha.webp", "webp-animated.webp", "bmp-core.bmp", "bmp-32.bmp",
          "heif-avif.avif", "heif-heic.heic", "png-6-16.png"}) {
        const auto size = codec().measure(Bytes::copyOf(readPicture(name)));
        ASSERT_TRUE(size) << name;
        EXPECT_EQ(size->width, pictureWidth) << name;
        EXPECT_EQ(size->height, pictureHeight) << name;
    }
}

TEST(EncodePng, keepsPicturesOfFewColoursSmall) {
    EXPECT_LT(codec().encodePng(Bytes::copyOf(readPicture("gif-static.gif")))->size(),
              2 * readPicture("gif-static.gif").size());
    EXPECT_LT(codec().encodePng(Bytes::copyOf(readPicture("tiff-bilevel.tif")))->size(),
              pictureWidth * pictureHeight / 8 + 1000U);
}

} // namespace
} // namespace tavel
