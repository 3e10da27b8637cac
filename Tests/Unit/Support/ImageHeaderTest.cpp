#include "ImageHeaders/ImageHeader.h"

#include "Tests/Unit/Fixtures/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace tavel {
namespace {

using namespace std::string_literals;

using Found = std::optional<std::tuple<std::string, std::int64_t, std::int64_t>>;

/// Reads a copy of the content's exact size, so that a sanitizer detects reads beyond it.
Found read(std::string_view content) {
    const auto exact = std::make_unique<char[]>(content.size());
    content.copy(exact.get(), content.size());
    const auto header = readImageHeader({exact.get(), content.size()});
    if (!header)
        return std::nullopt;
    return std::tuple(std::string(header->typeIdentifier), header->width, header->height);
}

Found found(const std::string& type, std::int64_t width, std::int64_t height) {
    return std::tuple(type, width, height);
}

std::string little(std::uint64_t value, std::size_t octets) {
    std::string text;
    for (std::size_t i = 0; i < octets; ++i, value >>= 8)
        text += static_cast<char>(static_cast<unsigned char>(value & 0xFF));
    return text;
}

std::string big(std::uint64_t value, std::size_t octets) {
    const std::string text = little(value, octets);
    return {text.rbegin(), text.rend()};
}

/// The checksum by its definition, the remainder of a polynomial division, highest power first.
std::uint32_t pngChecksum(const std::string& chunk) {
    std::vector<bool> bits;
    for (const char c : chunk)
        for (int i = 0; i < 8; ++i)
            bits.push_back((static_cast<unsigned char>(c) >> i & 1) != 0);
    for (std::size_t i = 0; i < 32; ++i)
        bits[i] = !bits[i];
    bits.resize(bits.size() + 32);
    for (std::size_t at = 0; at + 32 < bits.size(); ++at) {
        if (!bits[at])
            continue;
        bits[at] = false;
        for (const std::size_t power : {26U, 23U, 22U, 16U, 12U, 11U, 10U, 8U, 7U, 5U, 4U, 2U, 1U, 0U})
            bits[at + 32 - power] = !bits[at + 32 - power];
    }
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 32; ++i)
        value |= static_cast<std::uint32_t>(!bits[bits.size() - 32 + i]) << i;
    return value;
}

std::string pngWithHeader(const std::string& data, std::uint32_t checksumError = 0) {
    const std::string chunk = "IHDR" + data;
    return "\x89PNG\r\n\x1a\n" + big(data.size(), 4) + chunk + big(pngChecksum(chunk) ^ checksumError, 4);
}

std::string png(std::uint32_t width, std::uint32_t height, const std::string& rest = "\x08\x02\0\0\0"s) {
    return pngWithHeader(big(width, 4) + big(height, 4) + rest);
}

std::string gif(std::uint32_t width, std::uint32_t height) {
    return "GIF89a" + little(width, 2) + little(height, 2) + "\0\0\0"s;
}

std::string jpegFrame(unsigned char marker, std::uint32_t width, std::uint32_t height) {
    return "\xFF"s + static_cast<char>(marker) + "\0\x0B\x08"s + big(height, 2) + big(width, 2) +
           "\x01\x01\x11\0"s;
}

std::string jpeg(std::uint32_t width, std::uint32_t height) {
    return "\xFF\xD8\xFF\xE0\0\x10JFIF\0\x01\x01\0\0\x01\0\x01\0\0"s + jpegFrame(0xC0, width, height);
}

std::string (*numbersOf(bool isLittleEndian))(std::uint64_t, std::size_t) {
    return isLittleEndian ? little : big;
}

std::string tiffEntry(bool isLittleEndian, unsigned tag, unsigned type, std::uint64_t value) {
    const auto number = numbersOf(isLittleEndian);
    const std::string stored = type == 3 ? number(value, 2) + "\0\0"s : number(value, 4);
    return number(tag, 2) + number(type, 2) + number(1, 4) + stored;
}

std::string tiff(bool isLittleEndian, const std::vector<std::string>& entries) {
    const auto number = numbersOf(isLittleEndian);
    std::string file =
        (isLittleEndian ? "II" : "MM") + number(42, 2) + number(8, 4) + number(entries.size(), 2);
    for (const std::string& entry : entries)
        file += entry;
    return file;
}

std::string tiff(bool isLittleEndian, unsigned type, std::uint64_t width, std::uint64_t height) {
    return tiff(isLittleEndian,
                {tiffEntry(isLittleEndian, 254, 4, 0), tiffEntry(isLittleEndian, 256, type, width),
                 tiffEntry(isLittleEndian, 257, type, height)});
}

std::string bigTiff(bool isLittleEndian, unsigned type, std::uint64_t width, std::uint64_t height) {
    const auto number = numbersOf(isLittleEndian);
    const std::size_t octets = type == 3 ? 2 : type == 4 ? 4 : 8;
    const auto entry = [&](unsigned tag, std::uint64_t value) {
        return number(tag, 2) + number(type, 2) + number(1, 8) + number(value, octets) +
               std::string(8 - octets, '\0');
    };
    return (isLittleEndian ? "II" : "MM") + number(43, 2) + number(8, 2) + number(0, 2) + number(16, 8) +
           number(2, 8) + entry(256, width) + entry(257, height);
}

std::string webp(const std::string& kind, const std::string& chunk) {
    return "RIFF" + little(chunk.size() + 12, 4) + "WEBP" + kind + little(chunk.size(), 4) + chunk;
}

std::string lossyWebp(std::uint32_t width, std::uint32_t height) {
    return webp("VP8 ", "\x10\x02\0\x9D\x01\x2A"s + little(width, 2) + little(height, 2));
}

std::string losslessWebp(std::uint32_t width, std::uint32_t height) {
    return webp("VP8L", "\x2F" + little((width - 1) | (height - 1) << 14, 4));
}

std::string extendedWebp(std::uint32_t width, std::uint32_t height) {
    return webp("VP8X", "\x10\0\0\0"s + little(width - 1, 3) + little(height - 1, 3));
}

std::string bmp(std::int64_t width, std::int64_t height, std::uint32_t headerSize = 40) {
    return "BM" + std::string(12, '\0') + little(headerSize, 4) +
           little(static_cast<std::uint64_t>(width), 4) + little(static_cast<std::uint64_t>(height), 4) +
           little(1, 2) + little(24, 2) + std::string(24, '\0');
}

std::string coreBmp(std::uint32_t width, std::uint32_t height) {
    return "BM" + std::string(12, '\0') + little(12, 4) + little(width, 2) + little(height, 2) +
           little(1, 2) + little(24, 2);
}

const std::vector<std::string>& everyFormat() {
    static const std::vector<std::string> files{png(640, 480),
                                                gif(640, 480),
                                                jpeg(640, 480),
                                                tiff(true, 3, 640, 480),
                                                tiff(false, 4, 640, 480),
                                                bigTiff(true, 16, 640, 480),
                                                bigTiff(false, 3, 640, 480),
                                                lossyWebp(640, 480),
                                                losslessWebp(640, 480),
                                                extendedWebp(640, 480),
                                                bmp(640, 480),
                                                coreBmp(640, 480)};
    return files;
}

TEST(ImageHeader, readsEveryFormat) {
    EXPECT_EQ(read(png(640, 480)), found("public.png", 640, 480));
    EXPECT_EQ(read(gif(640, 480)), found("com.compuserve.gif", 640, 480));
    EXPECT_EQ(read(jpeg(640, 480)), found("public.jpeg", 640, 480));
    EXPECT_EQ(read(lossyWebp(640, 480)), found("org.webmproject.webp", 640, 480));
    EXPECT_EQ(read(losslessWebp(640, 480)), found("org.webmproject.webp", 640, 480));
    EXPECT_EQ(read(extendedWebp(640, 480)), found("org.webmproject.webp", 640, 480));
    EXPECT_EQ(read(bmp(640, 480)), found("com.microsoft.bmp", 640, 480));
    EXPECT_EQ(read(coreBmp(640, 480)), found("com.microsoft.bmp", 640, 480));
    for (const bool isLittleEndian : {true, false}) {
        for (const unsigned type : {3U, 4U})
            EXPECT_EQ(read(tiff(isLittleEndian, type, 640, 480)), found("public.tiff", 640, 480));
        for (const unsigned type : {3U, 4U, 16U})
            EXPECT_EQ(read(bigTiff(isLittleEndian, type, 640, 480)), found("public.tiff", 640, 480));
    }
}

TEST(ImageHeader, needsEveryByteOfTheHeader) {
    for (const std::string& file : everyFormat()) {
        for (std::size_t size = 0; size < file.size(); ++size) {
            const auto header = read(std::string_view(file).substr(0, size));
            EXPECT_EQ(header, std::nullopt) << std::get<0>(read(file).value()) << " cut to " << size;
        }
        EXPECT_NE(read(file), std::nullopt);
        EXPECT_EQ(read(file + "more"), read(file));
    }
}

TEST(ImageHeader, knowsNothingElse) {
    for (const std::string& content :
         {""s, "\xFF"s, "<svg width=\"10\" height=\"10\"/>"s, "%PDF-1.7\n"s, "\0\0\0\x0CjP  \r\n\x87\n"s,
          "\xFF\x0A\xFA\x1F\x01\x90"s,
          "\0\0\0\x1C"
          "ftypavif"s,
          "GIF90a\x01\0\x01\0\0\0\0"s, "plain text"s, std::string(1000, '\0'), std::string(1000, '\xFF')})
        EXPECT_EQ(read(content), std::nullopt) << content;
}

TEST(ImageHeader, givesNothingForASideOfZero) {
    for (const auto& [width, height] : {std::pair{0U, 480U}, std::pair{640U, 0U}, std::pair{0U, 0U}}) {
        EXPECT_EQ(read(png(width, height)), std::nullopt);
        EXPECT_EQ(read(gif(width, height)), std::nullopt);
        EXPECT_EQ(read(jpeg(width, height)), std::nullopt);
        EXPECT_EQ(read(tiff(true, 3, width, height)), std::nullopt);
        EXPECT_EQ(read(bigTiff(false, 16, width, height)), std::nullopt);
        EXPECT_EQ(read(lossyWebp(width, height)), std::nullopt);
        EXPECT_EQ(read(bmp(width, height)), std::nullopt);
        EXPECT_EQ(read(coreBmp(width, height)), std::nullopt);
    }
}

TEST(ImageHeader, believesLargeSizes) {
    EXPECT_EQ(read(png(60'000, 60'000)), found("public.png", 60'000, 60'000));
    EXPECT_EQ(read(png(0x7FFFFFFF, 1)), found("public.png", 0x7FFFFFFF, 1));
    EXPECT_EQ(read(png(0x80000000, 1)), std::nullopt);
    EXPECT_EQ(read(gif(65'535, 65'535)), found("com.compuserve.gif", 65'535, 65'535));
    EXPECT_EQ(read(jpeg(65'535, 65'535)), found("public.jpeg", 65'535, 65'535));
    EXPECT_EQ(read(tiff(true, 4, 0xFFFFFFFF, 0xFFFFFFFF)), found("public.tiff", 0xFFFFFFFF, 0xFFFFFFFF));
    EXPECT_EQ(read(bigTiff(true, 16, 0xFFFFFFFF, 1)), found("public.tiff", 0xFFFFFFFF, 1));
    EXPECT_EQ(read(bigTiff(true, 16, 0x100000000, 1)), std::nullopt);
    EXPECT_EQ(read(bigTiff(true, 16, 1, UINT64_MAX)), std::nullopt);
    EXPECT_EQ(read(lossyWebp(16'383, 16'383)), found("org.webmproject.webp", 16'383, 16'383));
    EXPECT_EQ(read(losslessWebp(16'384, 16'384)), found("org.webmproject.webp", 16'384, 16'384));
    EXPECT_EQ(read(extendedWebp(0x1000000, 0x1000000)), found("org.webmproject.webp", 0x1000000, 0x1000000));
    EXPECT_EQ(read(bmp(INT32_MAX, INT32_MIN)),
              found("com.microsoft.bmp", INT32_MAX, -std::int64_t{INT32_MIN}));
}

TEST(ImageHeader, refusesBrokenPngHeaders) {
    const std::string sides = big(5, 4) + big(7, 4);
    EXPECT_NE(read(pngWithHeader(sides + "\x08\x02\0\0\0"s)), std::nullopt);
    EXPECT_EQ(read(pngWithHeader(sides + "\x08\x02\0\0\0"s, 1)), std::nullopt) << "checksum";
    EXPECT_EQ(read(pngWithHeader(sides + "\x08\x02\0\0\0\0"s)), std::nullopt) << "length";
    EXPECT_EQ(read(pngWithHeader(sides + "\x08\x02\x01\0\0"s)), std::nullopt) << "compression";
    EXPECT_EQ(read(pngWithHeader(sides + "\x08\x02\0\x01\0"s)), std::nullopt) << "filter";
    EXPECT_NE(read(pngWithHeader(sides + "\x08\x02\0\0\x01"s)), std::nullopt) << "interlacing";
    EXPECT_EQ(read(pngWithHeader(sides + "\x08\x02\0\0\x02"s)), std::nullopt) << "interlacing";
    std::string renamed = png(5, 7);
    renamed[12] = 'J';
    EXPECT_EQ(read(renamed), std::nullopt);
}

TEST(ImageHeader, knowsTheDepthsOfEachPngColourType) {
    const std::vector<std::vector<int>> depthsOfTypes{{1, 2, 4, 8, 16}, {}, {8, 16}, {1, 2, 4, 8},
                                                      {8, 16},          {}, {8, 16}, {}};
    for (int type = 0; type < 8; ++type) {
        const auto& depths = depthsOfTypes[static_cast<std::size_t>(type)];
        for (int depth = 0; depth <= 32; ++depth) {
            const bool isLegal = std::find(depths.begin(), depths.end(), depth) != depths.end();
            const std::string rest = {static_cast<char>(depth), static_cast<char>(type), 0, 0, 0};
            EXPECT_EQ(read(png(5, 7, rest)).has_value(), isLegal) << "type " << type << ", depth " << depth;
        }
    }
}

TEST(ImageHeader, walksAJpegToItsFirstFrame) {
    for (int marker = 0xC0; marker <= 0xCF; ++marker) {
        const bool isFrame = marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
        const std::string file = "\xFF\xD8" + jpegFrame(static_cast<unsigned char>(marker), 5, 7);
        EXPECT_EQ(read(file).has_value(), isFrame) << marker;
    }
    const std::string frames = jpegFrame(0xC2, 5, 7) + jpegFrame(0xC0, 50, 70);
    const Found expected = found("public.jpeg", 5, 7);
    EXPECT_EQ(read("\xFF\xD8" + frames), expected);
    EXPECT_EQ(read("\xFF\xD8\xFF\xFF\xFF" + frames), expected) << "fill bytes";
    EXPECT_EQ(read("\xFF\xD8\xFF\x01\xFF\xD0\xFF\xD7\xFF\xD8" + frames), expected) << "standing alone";
    EXPECT_EQ(read("\xFF\xD8\xFF\xE1\0\x02\xFF\xFE\0\x04\xFF\xC0"s + frames), expected) << "in a comment";
    EXPECT_EQ(read("\xFF\xD8\xFF\xE1\xFF\xFF"s + std::string(0xFFFD, '\xFF') + frames), expected);
}

TEST(ImageHeader, refusesBrokenJpegSegments) {
    const std::string frame = jpegFrame(0xC0, 5, 7);
    EXPECT_EQ(read("\xFF\xD8\xFF\xE1\0\0"s + frame), std::nullopt) << "length 0";
    EXPECT_EQ(read("\xFF\xD8\xFF\xE1\0\x01"s + frame), std::nullopt) << "length 1";
    EXPECT_EQ(read("\xFF\xD8\xFF\xE1\xFF\xFF"s + frame), std::nullopt) << "length beyond the end";
    EXPECT_EQ(read("\xFF\xD8\xFF\xDA\0\x02"s + frame), std::nullopt) << "a scan first";
    EXPECT_EQ(read("\xFF\xD8\xFF\xD9"s + frame), std::nullopt) << "the end first";
    EXPECT_EQ(read("\xFF\xD8\xFF\0"s + frame), std::nullopt) << "no marker";
    EXPECT_EQ(read("\xFF\xD8\xFF\xE1\0\x02\0"s + frame), std::nullopt) << "bytes between segments";
    std::string components = "\xFF\xD8" + frame;
    components[11] = 2;
    EXPECT_EQ(read(components), std::nullopt) << "more components than the segment has room for";
    components[11] = 0;
    EXPECT_EQ(read(components), std::nullopt) << "no component";
}

TEST(ImageHeader, readsOnlyTheFirstTiffDirectory) {
    EXPECT_EQ(read(tiff(true, {tiffEntry(true, 256, 3, 5), tiffEntry(true, 257, 3, 7),
                               tiffEntry(true, 256, 3, 9)}) +
                   little(8, 4)),
              found("public.tiff", 5, 7))
        << "the next directory is the same one";
    EXPECT_EQ(read(tiff(true, {tiffEntry(true, 256, 3, 5)}) + little(8, 4)), std::nullopt);
    EXPECT_EQ(read(tiff(true, {tiffEntry(true, 257, 3, 5)}) + little(8, 4)), std::nullopt);
    EXPECT_EQ(read(tiff(true, {tiffEntry(true, 256, 3, 5), tiffEntry(true, 256, 3, 6),
                               tiffEntry(true, 257, 4, 7)})),
              found("public.tiff", 5, 7))
        << "the first of two entries counts";
}

TEST(ImageHeader, refusesBrokenTiffDirectories) {
    const std::string entries = tiffEntry(true, 256, 3, 5) + tiffEntry(true, 257, 3, 7);
    for (const std::uint64_t offset : {0x10U, 0xFFFFFFFFU, 0x7FFFFFFFU, 0U})
        EXPECT_EQ(read("II*\0"s + little(offset, 4) + little(2, 2) + entries), std::nullopt) << offset;
    EXPECT_EQ(read("II*\0"s + little(8, 4) + little(65'535, 2) + tiffEntry(true, 254, 4, 0)), std::nullopt);
    EXPECT_EQ(read("II*\0"s + little(8, 4) + little(65'535, 2) + entries), found("public.tiff", 5, 7))
        << "what follows the size is not looked at";
    EXPECT_EQ(read("II*\0"s + little(8, 4) + little(0, 2) + entries), std::nullopt);
    for (const unsigned type : {0U, 1U, 2U, 5U, 8U, 9U, 11U, 16U, 65'535U})
        EXPECT_EQ(read(tiff(true, {tiffEntry(true, 256, type, 5), tiffEntry(true, 257, 3, 7)})), std::nullopt)
            << type;
    std::string twoValues = tiff(true, 3, 5, 7);
    twoValues[twoValues.size() - 8] = 2;
    EXPECT_EQ(read(twoValues), std::nullopt);
    for (const std::string& start : {"II+\0\x08\0\0\0"s, "MM\0+\0\x08\0\0"s})
        EXPECT_EQ(read(start + std::string(8, '\xFF') + entries), std::nullopt)
            << "a directory beyond the end";
    EXPECT_EQ(read("II+\0\x04\0\0\0"s + bigTiff(true, 4, 5, 7).substr(8)), std::nullopt)
        << "offsets of 4 bytes";
    std::string manyEntries = bigTiff(true, 4, 5, 7);
    manyEntries.replace(16, 8, std::string(8, '\xFF'));
    EXPECT_EQ(read(manyEntries), std::nullopt);
}

TEST(ImageHeader, refusesBrokenWebpHeaders) {
    EXPECT_EQ(read(webp("VP8 ", "\x11\x02\0\x9D\x01\x2A\x05\0\x07\0"s)), std::nullopt) << "not a key frame";
    EXPECT_EQ(read(webp("VP8 ", "\x10\x02\0\x9D\x01\x2B\x05\0\x07\0"s)), std::nullopt) << "no start code";
    EXPECT_EQ(read(webp("VP8L", "\x2E\x04\x80\x01\0"s)), std::nullopt) << "no signature";
    EXPECT_EQ(read(webp("VP8L", "\x2F\x04\x80\x01\x20"s)), std::nullopt) << "another version";
    EXPECT_EQ(read(webp("ICCP", std::string(20, '\0'))), std::nullopt);
    EXPECT_EQ(read(lossyWebp(0x4005, 0x8007)), found("org.webmproject.webp", 5, 7)) << "scales";
}

TEST(ImageHeader, readsBmpHeadersOfEveryLength) {
    for (const std::uint32_t size : {40U, 52U, 56U, 64U, 108U, 124U})
        EXPECT_EQ(read(bmp(5, 7, size)), found("com.microsoft.bmp", 5, 7)) << size;
    for (const std::uint32_t size : {0U, 11U, 13U, 16U, 39U, 125U, 0xFFFFFFFFU})
        EXPECT_EQ(read(bmp(5, 7, size)), std::nullopt) << size;
    EXPECT_EQ(read(bmp(5, -7)), found("com.microsoft.bmp", 5, 7)) << "from the top down";
    EXPECT_EQ(read(bmp(-5, 7)), std::nullopt);
    std::string planes = bmp(5, 7);
    planes[26] = 2;
    EXPECT_EQ(read(planes), std::nullopt);
}

TEST(ImageHeader, survivesAnyBytes) {
    Random random(1);
    for (const std::string& file : everyFormat()) {
        for (int round = 0; round < 20'000; ++round) {
            std::string changed = file;
            for (std::size_t i = 0; i <= random.below(4); ++i)
                changed[random.below(changed.size())] = random.byte();
            if (const auto header = read(changed)) {
                EXPECT_GE(std::get<1>(*header), 1);
                EXPECT_GE(std::get<2>(*header), 1);
            }
        }
    }
}

} // namespace
} // namespace tavel
