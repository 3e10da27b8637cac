#include "Console/ExportedFile.h"

#include "Console/SamplePicture.h"
#include "Tests/Tools/World.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <filesystem>

namespace tavel {

namespace {

class ExportedFile : public testing::Test {
protected:
    World world_;
};

void appendNumber(std::string& file, std::uint32_t number, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i)
        file += static_cast<char>(number >> (8 * i) & 0xFF);
}

/// A TIFF file of 640 × 480 grey pixels with its directory at the end.
std::string tiffFile() {
    constexpr std::uint32_t pixelBytes = 640 * 480;
    constexpr std::uint32_t pixelOffset = 8;
    std::string file("II*\0", 4);
    appendNumber(file, pixelOffset + pixelBytes, 4);
    file.append(pixelBytes, 'x');
    struct Entry {
        std::uint32_t tag;
        std::uint32_t value;
    };
    constexpr std::array<Entry, 8> entries{{{256, 640},
                                            {257, 480},
                                            {258, 8},
                                            {259, 1},
                                            {262, 1},
                                            {273, pixelOffset},
                                            {278, 480},
                                            {279, pixelBytes}}};
    appendNumber(file, entries.size(), 2);
    for (const auto& [tag, value] : entries) {
        appendNumber(file, tag, 2);
        appendNumber(file, 4, 2); // LONG: four bytes, unsigned
        appendNumber(file, 1, 4); // one value
        appendNumber(file, value, 4);
    }
    appendNumber(file, 0, 4);
    return file;
}

TEST_F(ExportedFile, TellsThePixelsOfAPicture) {
    const std::string path = world_.write("a.png", samplePicture());
    EXPECT_EQ(describePicture(path), "picture, 24 × 16 pixels, 96 bytes: " + path);
}

TEST_F(ExportedFile, TellsThePixelsThatStandAtTheEnd) {
    const std::string path = world_.write("image.tiff", tiffFile());
    EXPECT_EQ(describeFormat(path), "TIFF picture, 640 × 480 pixels, 300.1 KiB: " + path);
}

TEST_F(ExportedFile, TellsOfPicturesThatItCannotMeasure) {
    const std::string path = world_.write("a.png", "nonsense");
    EXPECT_EQ(describePicture(path), "picture, of unknown dimensions, 8 bytes: " + path);
}

TEST_F(ExportedFile, TellsOfFilesThatAreGone) {
    EXPECT_EQ(describePicture("/gone/a.png"), "picture, gone by now: /gone/a.png");
    EXPECT_EQ(describeFormat("/gone/text.html"), "HTML, gone by now: /gone/text.html");
    EXPECT_EQ(describePicture("/gone/\x1b[m"), "picture, gone by now: /gone/\\e[m");
}

TEST_F(ExportedFile, TellsWhyFilesAreNotReadable) {
    const std::filesystem::path path = world_.directory() / "text.rtf";
    std::filesystem::create_directory(path);
    EXPECT_EQ(describeFormat(path.string()), "RTF, not readable: " + path.string() + ": Is a directory");
}

TEST_F(ExportedFile, NamesEveryFormat) {
    const auto described = [this](const std::string& name, std::string_view content) {
        const std::string path = world_.write(name, content);
        const std::string text = describeFormat(path);
        EXPECT_TRUE(text.ends_with(": " + path)) << text;
        return text.substr(0, text.size() - path.size() - 2);
    };
    const std::string_view picture = samplePicture(); // the size comes from the content
    EXPECT_EQ(described("document.pdf", "%PDF"), "PDF, 4 bytes");
    EXPECT_EQ(described("image.gif", picture), "GIF picture, 24 × 16 pixels, 96 bytes");
    EXPECT_EQ(described("image.svg", "<svg/>"), "SVG picture, 6 bytes");
    EXPECT_EQ(described("image.webp", picture), "WebP picture, 24 × 16 pixels, 96 bytes");
    EXPECT_EQ(described("image.tiff", picture), "TIFF picture, 24 × 16 pixels, 96 bytes");
    EXPECT_EQ(described("image.jpeg", picture), "JPEG picture, 24 × 16 pixels, 96 bytes");
    EXPECT_EQ(described("image.png", picture), "PNG picture, 24 × 16 pixels, 96 bytes");
    EXPECT_EQ(described("text.rtf", "{}"), "RTF, 2 bytes");
    EXPECT_EQ(described("text.html", std::string(2048, 'x')), "HTML, 2.0 KiB");
    EXPECT_EQ(described("text.txt", "x"), "plain text, 1 byte");
    EXPECT_EQ(described("text.doc", "x"), "unknown format, 1 byte");
}

} // namespace

} // namespace tavel
