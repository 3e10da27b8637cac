#include "Tests/Images/Pictures.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace tavel {
namespace {

using namespace std::string_literals;

std::string little(std::uint64_t value, std::size_t octets) {
    std::string text;
    for (std::size_t i = 0; i < octets; ++i, value >>= 8)
        text += static_cast<char>(static_cast<unsigned char>(value & 0xFF));
    return text;
}

std::string entry(unsigned tag, unsigned type, std::uint64_t count, std::uint64_t value) {
    return little(tag, 2) + little(type, 2) + little(count, 4) + little(value, 4);
}

/// A grey TIFF of 8 bits per sample with all pixels, zeros, in one strip. `further` holds additional entries
/// and `next` is the offset of the next directory.
std::string greyTiff(std::uint32_t width, std::uint32_t height, const std::string& further = "",
                     std::uint32_t next = 0) {
    const std::size_t count = 8 + further.size() / 12;
    const std::size_t pixels = 8 + 2 + count * 12 + 4;
    return "II*\0\x08\0\0\0"s + little(count, 2) + entry(256, 4, 1, width) + entry(257, 4, 1, height) +
           entry(258, 3, 1, 8) + entry(259, 3, 1, 1) + entry(262, 3, 1, 1) + entry(273, 4, 1, pixels) +
           entry(278, 4, 1, height) + entry(279, 4, 1, std::uint64_t{width} * height) + further +
           little(next, 4) + std::string(std::size_t{width} * height, '\0');
}

/// Replaces the screen size in a GIF's header.
std::string withGifSize(std::string gif, std::uint32_t width, std::uint32_t height) {
    return gif.replace(6, 4, little(width, 2) + little(height, 2));
}

TEST(HostileImage, decodesUpToTheLimitOfPixels) {
    const auto most = codec().encodePng(Bytes::adopt(greyTiff(6000, 5333)));
    ASSERT_TRUE(most);
    EXPECT_EQ(codec().measure(*most)->width, 6000);
    EXPECT_EQ(codec().measure(*most)->height, 5333);
    const Bytes tooMany = Bytes::adopt(greyTiff(6000, 5334));
    EXPECT_TRUE(codec().measure(tooMany)) << "it is an image";
    EXPECT_FALSE(codec().encodePng(tooMany));
    EXPECT_FALSE(codec().encodeJpeg(tooMany, 0.8));
}

TEST(HostileImage, measuresAPngThatClaimsTooMuchButDoesNotDecodeIt) {
    // Sides of 60,000 pixels, with the correct checksum of the header.
    const std::string file =
        "\x89PNG\r\n\x1a\n\0\0\0\x0DIHDR\0\0\xEA\x60\0\0\xEA\x60\x08\x02\0\0\0"s + "\x0F\xB0\xE2\x15"s;
    const auto size = codec().measure(Bytes::copyOf(file));
    ASSERT_TRUE(size);
    EXPECT_EQ(size->width, 60'000);
    EXPECT_EQ(size->height, 60'000);
    EXPECT_FALSE(codec().encodeJpeg(Bytes::copyOf(file), 0.8));
}

TEST(HostileImage, refusesSizesThatTheDataContradict) {
    EXPECT_FALSE(throughPng(withGifSize(readPicture("gif-static.gif"), 65'535, 65'535)));
    std::string bmp = readPicture("bmp-24.bmp");
    EXPECT_FALSE(throughPng(bmp.replace(18, 8, little(5000, 4) + little(6000, 4))));
    EXPECT_FALSE(throughPng(greyTiff(100, 100).substr(0, 5000)));
}

/// A GIF with one frame of black pixels, of which most are missing.
std::string gifWithFrame(unsigned width, unsigned height, unsigned left, unsigned top, unsigned frameWidth,
                         unsigned frameHeight) {
    return "GIF89a" + little(width, 2) + little(height, 2) + "\x80\0\0"s + "\0\0\0\xFF\xFF\xFF"s + "\x2C"s +
           little(left, 2) + little(top, 2) + little(frameWidth, 2) + little(frameHeight, 2) +
           "\0\x02\x02\x44\x01\0;"s;
}

TEST(HostileImage, doesNotPassOverATallScreenAboveAGifFrame) {
    // Takes a quarter of a second; libvips' way from the top of the screen to this frame takes 40 seconds.
    const auto start = std::chrono::steady_clock::now();
    const auto png = throughPng(gifWithFrame(100, 65'535, 0, 65'534, 1, 489));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
    ASSERT_TRUE(png);
    EXPECT_EQ(png->height, 65'535U);
}

TEST(HostileImage, readsOnlyTheFirstOfManyGifFrames) {
    const std::string gif = readPicture("gif-static.gif");
    const std::size_t frameStart = gif.find("\x2C\0\0\0\0"s);
    ASSERT_NE(frameStart, std::string::npos);
    std::string bomb = gif.substr(0, gif.size() - 1);
    const std::string tinyFrame = "\x2C\0\0\0\0\xFF\xFF\xFF\xFF\0\x02\x02\x44\x01\0"s;
    for (int i = 0; i < 1'000'000; ++i)
        bomb += tinyFrame;
    const auto png = throughPng(bomb + ";");
    ASSERT_TRUE(png);
    EXPECT_TRUE(png->pixels == throughPng(gif)->pixels);
}

TEST(HostileImage, readsOnlyTheFirstOfTiffDirectoriesInALoop) {
    EXPECT_TRUE(throughPng(greyTiff(100, 100, "", 8)));
    // A chain of a million directories with one entry each.
    std::string chain = greyTiff(10, 10);
    const std::size_t next = 8 + 2 + std::size_t{8} * 12;
    chain.replace(next, 4, little(chain.size(), 4));
    for (int i = 0; i < 1'000'000; ++i)
        chain += little(1, 2) + entry(254, 4, 1, 0) + little(chain.size() + 18, 4);
    EXPECT_TRUE(throughPng(chain));
}

TEST(HostileImage, refusesAbsurdTiffLayouts) {
    EXPECT_FALSE(throughPng(greyTiff(100, 100, entry(322, 4, 1, 0x10000) + entry(323, 4, 1, 0x10000))));
    EXPECT_FALSE(throughPng(greyTiff(100, 100, entry(277, 3, 1, 65'535))));
}

/// A progressive JPEG of one block in `count` scans, at most 127: one for the DC coefficient and two for each
/// of the 63 AC coefficients, all empty. The only code of both Huffman tables is a single bit.
std::string jpegOfScans(int count) {
    const std::string codes = "\x01"s + std::string(15, '\0') + '\0';
    std::string file = "\xFF\xD8\xFF\xDB\0\x43\0"s + std::string(64, '\x01') +
                       "\xFF\xC2\0\x0B\x08\0\x08\0\x08\x01\x01\x11\0"s + "\xFF\xC4\0\x14\0"s + codes +
                       "\xFF\xC4\0\x14\x10"s + codes;
    file += "\xFF\xDA\0\x08\x01\x01\0\0\0\0\x7F"s;
    for (int i = 0; i < count - 1; ++i) {
        const char wave = static_cast<char>(i % 63 + 1);
        const char bits =
            i < 63 ? '\x01' : '\x10'; // successive approximation: first all bits but the last, then the last
        file += "\xFF\xDA\0\x08\x01\x01\0"s + wave + wave + bits + '\x7F';
    }
    return file + "\xFF\xD9";
}

TEST(HostileImage, refusesJpegsOfMoreThanAHundredScans) {
    EXPECT_TRUE(throughPng(jpegOfScans(2)));
    EXPECT_TRUE(throughPng(jpegOfScans(100)));
    EXPECT_FALSE(throughPng(jpegOfScans(101)));
    EXPECT_TRUE(codec().measure(Bytes::adopt(jpegOfScans(127)))) << "it is an image";
}

TEST(HostileImage, refusesWebpsOfVeryManyFrames) {
    const std::string webp = readPicture("webp-animated.webp");
    std::string bomb = webp;
    for (int i = 0; i < 10'000; ++i)
        bomb += "ANMF" + little(0, 4);
    EXPECT_TRUE(throughPng(webp));
    EXPECT_FALSE(throughPng(bomb));
}

TEST(HostileImage, passesOverLargeMetadata) {
    const std::string jpeg = readPicture("jpeg-baseline.jpg");
    std::string file = jpeg.substr(0, 2);
    for (int i = 0; i < 255; ++i)
        file += "\xFF\xE2\xFF\xFF"s + "ICC_PROFILE\0"s + static_cast<char>(i + 1) + '\xFF' +
                std::string(65'519, 'p');
    for (int i = 0; i < 100; ++i)
        file += "\xFF\xE1\xFF\xFF"s + "Exif\0\0"s + std::string(65'527, 'x');
    const auto png = throughPng(file + jpeg.substr(2));
    ASSERT_TRUE(png);
    EXPECT_EQ(png->profile, "") << "it is none";
}

TEST(HostileImage, refusesFormatsThatArePrograms) {
    for (
        const std::string& file :
        {"<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"10\" height=\"10\"><rect width=\"10\" height=\"10\"/></svg>"s,
         "%PDF-1.4\n1 0 obj<</Type/Catalog>>endobj\ntrailer<</Root 1 0 R>>"s, "%!PS-Adobe-3.0 EPSF-3.0\n"s,
         "push graphic-context\nviewbox 0 0 10 10\n"s, "P6 1 1 255\nabc"s, "#?RADIANCE\n"s,
         "\0\0\0\x0CjP  \r\n\x87\n"s, "\xFF\x0A\xFA\x1F\x01\x90"s, ""s}) {
        const Bytes bytes = Bytes::copyOf(file);
        EXPECT_FALSE(codec().measure(bytes)) << file;
        EXPECT_FALSE(codec().typeIdentifier(bytes)) << file;
        EXPECT_FALSE(codec().encodePng(bytes)) << file;
        EXPECT_FALSE(codec().encodeJpeg(bytes, 0.8)) << file;
    }
}

} // namespace
} // namespace tavel
