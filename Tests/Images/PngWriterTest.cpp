#include "Linux/Images/Program/PngWriter.h"

#include "Tests/Images/DecodedPng.h"
#include "Tests/Images/FailingAllocation.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {
namespace {

struct Picture {
    RowLayout layout;
    std::vector<std::uint8_t> bytes;

    const std::uint8_t* row(std::size_t y) const { return bytes.data() + y * layout.rowSize(); }
};

/// The same numbers in every run, from 0 to 255.
class Noise {
public:
    std::uint8_t next() {
        state_ = state_ * 6'364'136'223'846'793'005U + 1'442'695'040'888'963'407U;
        return static_cast<std::uint8_t>(state_ >> 56);
    }

private:
    std::uint64_t state_ = 1;
};

/// Calls `value` for each byte, from left to right and from the top down, with its place in the row and with
/// the row.
template <typename Value>
Picture makePicture(const RowLayout& layout, Value value) {
    Picture picture{layout, {}};
    picture.bytes.reserve(layout.rowSize() * layout.height);
    for (std::size_t y = 0; y < layout.height; ++y) {
        for (std::size_t x = 0; x < layout.rowSize(); ++x)
            picture.bytes.push_back(static_cast<std::uint8_t>(value(x, y)));
    }
    return picture;
}

/// Slow changes and a little noise.
Picture photograph(const RowLayout& layout) {
    Noise noise;
    return makePicture(layout,
                       [&](std::size_t x, std::size_t y) { return x / 7 + y / 5 + noise.next() % 8; });
}

/// The pixels as decodePng gives them.
std::vector<std::uint16_t> rgba(const Picture& picture) {
    const RowLayout& layout = picture.layout;
    std::vector<std::uint16_t> result;
    result.reserve(layout.width * layout.height * 4);
    for (std::size_t i = 0; i < layout.width * layout.height; ++i) {
        const auto sample = [&](std::size_t band) {
            const std::uint8_t* const at =
                picture.bytes.data() + i * layout.pixelSize() + band * layout.sampleSize;
            return static_cast<std::uint16_t>(layout.sampleSize == 1 ? at[0] * 257 : at[1] << 8 | at[0]);
        };
        const bool isGrey = layout.bands < 3;
        for (std::size_t band = 0; band < 3; ++band)
            result.push_back(sample(isGrey ? 0 : band));
        result.push_back(layout.bands % 2 == 0 ? sample(layout.bands - 1) : std::uint16_t{0xFFFF});
    }
    return result;
}

bool write(
    const Picture& picture, bool mayHaveFewColours, ImageOutput& output,
    const std::function<void()>& beforeTheEnd = [] {}) {
    PngWriter writer(picture.layout, {}, mayHaveFewColours, output);
    for (std::size_t y = 0; y < picture.layout.height; ++y) {
        if (!writer.take(picture.row(y)))
            return false;
    }
    beforeTheEnd();
    return writer.finish();
}

/// Writes the picture as PNG into a room of that size. nullopt if it does not fit.
std::optional<std::string> writeInto(
    std::size_t size, const Picture& picture, bool mayHaveFewColours = false,
    const std::function<void()>& beforeTheEnd = [] {}) {
    std::vector<char> room(size);
    ImageOutput output(room);
    if (!write(picture, mayHaveFewColours, output, beforeTheEnd))
        return std::nullopt;
    return std::string(output.written().begin(), output.written().end());
}

std::size_t amply(const Picture& picture) {
    return 2 * picture.bytes.size() + 10'000;
}

/// Writes the picture and expects that libpng, which checks all checksums, reads the same pixels. Returns the
/// file.
std::string expectKept(const Picture& picture, int depth, bool mayHaveFewColours = false) {
    const auto file = writeInto(amply(picture), picture, mayHaveFewColours);
    if (!file) {
        ADD_FAILURE() << "not written";
        return {};
    }
    const auto png = decodePng(*file);
    EXPECT_TRUE(png);
    if (png) {
        EXPECT_EQ(png->width, picture.layout.width);
        EXPECT_EQ(png->height, picture.layout.height);
        EXPECT_EQ(png->depth, depth);
        EXPECT_TRUE(png->pixels == rgba(picture));
    }
    return *file;
}

std::size_t countImageData(const std::string& file) {
    std::size_t count = 0;
    for (std::size_t at = 8; at + 8 < file.size();) {
        std::size_t size = 0;
        for (std::size_t i = 0; i < 4; ++i)
            size = size << 8 | static_cast<unsigned char>(file[at + i]);
        count += file.compare(at + 4, 4, "IDAT") == 0 ? 1 : 0;
        at += 12 + size;
    }
    return count;
}

std::size_t countThreads() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<std::size_t>(std::distance(begin(tasks), end(tasks)));
}

constexpr RowLayout severalBands{500, 1100, 3, 1};

TEST(PngWriter, keepsThePixelsAtTheEdgesOfBands) {
    constexpr std::size_t width = 341;
    constexpr std::size_t rows = ImageDataWriter::bandSize / (1 + 3 * width);
    static_assert(rows * (1 + 3 * width) == ImageDataWriter::bandSize, "a whole number of rows in a band");
    for (const auto& [height, bands] : {std::pair(rows - 1, 1U), std::pair(rows, 1U), std::pair(rows + 1, 2U),
                                        std::pair(2 * rows + 1, 3U)}) {
        SCOPED_TRACE(height);
        EXPECT_EQ(countImageData(expectKept(photograph({width, height, 3, 1}), 8)), bands);
    }
}

TEST(PngWriter, keepsRowsLongerThanABand) {
    expectKept(photograph({ImageDataWriter::bandSize, 3, 3, 1}), 8);
}

TEST(PngWriter, keepsASingleRowAndASinglePixel) {
    expectKept(photograph({300, 1, 3, 1}), 8);
    expectKept(photograph({1, 300, 3, 1}), 8);
    expectKept(photograph({1, 1, 1, 1}), 8);
}

TEST(PngWriter, keepsEveryKindOfPixelOverSeveralBands) {
    for (const std::size_t bands : {1U, 2U, 3U, 4U}) {
        for (const std::size_t sampleSize : {1U, 2U}) {
            SCOPED_TRACE(testing::Message() << bands << " bands of " << sampleSize << " bytes");
            expectKept(photograph({900, 600, bands, sampleSize}), static_cast<int>(8 * sampleSize));
        }
    }
}

TEST(PngWriter, storesWhatCannotBeCompressed) {
    Noise noise;
    const Picture picture = makePicture(severalBands, [&](std::size_t, std::size_t) { return noise.next(); });
    EXPECT_LT(expectKept(picture, 8).size(), picture.bytes.size() * 1001 / 1000);
}

TEST(PngWriter, findsTheFilterThatSuitsAPicture) {
    Noise noise;
    std::vector<std::uint8_t> colours;
    std::generate_n(std::back_inserter(colours), std::max(severalBands.rowSize(), severalBands.height),
                    [&] { return noise.next(); });
    const auto columns = makePicture(severalBands, [&](std::size_t x, std::size_t) { return colours[x]; });
    const auto lines = makePicture(severalBands, [&](std::size_t, std::size_t y) { return colours[y]; });
    std::vector<std::uint8_t> above = colours;
    above.resize(severalBands.rowSize());
    std::vector<std::uint8_t> row(severalBands.rowSize());
    const auto averages = makePicture(severalBands, [&](std::size_t x, std::size_t y) {
        if (x == 0)
            row.swap(above);
        row[x] =
            static_cast<std::uint8_t>(((x < 3 ? 0 : row[x - 3]) + above[x]) / 2 + (x < 3 ? colours[y] : 1));
        return row[x];
    });
    for (const Picture& picture : {columns, lines, averages})
        EXPECT_LT(expectKept(picture, 8).size(), picture.bytes.size() / 50);
}

TEST(PngWriter, indexesFewColoursInAsFewBitsAsTheyNeed) {
    for (const std::size_t bands : {3U, 4U}) {
        for (const auto& [count, depth] : {std::pair(2U, 1), std::pair(4U, 2), std::pair(5U, 4),
                                           std::pair(16U, 4), std::pair(17U, 8), std::pair(256U, 8)}) {
            SCOPED_TRACE(testing::Message() << count << " colours of " << bands << " bands");
            const Picture picture = makePicture({999, 599, bands, 1}, [&](std::size_t x, std::size_t y) {
                const std::size_t colour = (x / bands + y) % count;
                return colour * (x % bands + 1);
            });
            const std::string file = expectKept(picture, depth, true);
            EXPECT_EQ(decodePng(file)->colourType, 3);
        }
    }
}

TEST(PngWriter, keepsThePixelsWhenTheLastRowHasOneColourTooMany) {
    const Picture picture = makePicture({999, 999, 3, 1}, [&](std::size_t x, std::size_t y) {
        return x == 999 * 3 - 1 && y == 998 ? 77 : (x / 3 + y) % 256;
    });
    EXPECT_EQ(decodePng(expectKept(picture, 8, true))->colourType, 2);
}

TEST(PngWriter, saysWhenTheFileDoesNotFit) {
    for (const std::size_t height : {10U, 2000U}) {
        for (const bool mayHaveFewColours : {false, true}) {
            SCOPED_TRACE(testing::Message() << height << " rows, few colours: " << mayHaveFewColours);
            const Picture picture = makePicture({1000, height, 3, 1}, [&](std::size_t x, std::size_t y) {
                return (x * x + y * y * y) % 251 & 0xF0;
            });
            const auto file = writeInto(amply(picture), picture, mayHaveFewColours);
            ASSERT_TRUE(file);
            EXPECT_EQ(writeInto(file->size(), picture, mayHaveFewColours), file);
            for (const std::size_t room :
                 {file->size() - 1, file->size() - 13, file->size() / 2, std::size_t{50}})
                EXPECT_FALSE(writeInto(room, picture, mayHaveFewColours)) << room;
        }
    }
}

TEST(PngWriter, writesNoFileWithoutAPaletteThatDoesNotFit) {
    const Picture spectrum = makePicture({256, 1, 3, 1}, [](std::size_t x, std::size_t) { return x / 3; });
    EXPECT_FALSE(writeInto(600, spectrum, true)) << "what follows the palette would fit";
}

TEST(PngWriter, startsThreadsForOtherProcessorsFromTheSecondBandOn) {
    const std::size_t before = countThreads();
    cpu_set_t processors;
    ASSERT_EQ(sched_getaffinity(0, sizeof processors, &processors), 0);
    const auto others = static_cast<std::size_t>(std::min(CPU_COUNT(&processors) - 1, 3));
    std::size_t during = 0;
    const auto count = [&] { during = countThreads(); };
    EXPECT_TRUE(writeInto(10'000'000, photograph({100, 100, 3, 1}), false, count));
    EXPECT_EQ(during, before);
    EXPECT_TRUE(writeInto(10'000'000, photograph(severalBands), false, count));
    EXPECT_EQ(during, before + others);
}

TEST(PngWriter, doesTheWorkAloneOnASingleProcessor) {
    cpu_set_t all;
    ASSERT_EQ(sched_getaffinity(0, sizeof all, &all), 0);
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<std::size_t>(sched_getcpu()), &one);
    ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
    const std::size_t before = countThreads();
    const Picture picture = photograph(severalBands);
    const auto file = writeInto(amply(picture), picture, false, [&] { EXPECT_EQ(countThreads(), before); });
    EXPECT_EQ(sched_setaffinity(0, sizeof all, &all), 0);
    ASSERT_TRUE(file);
    EXPECT_TRUE(decodePng(*file)->pixels == rgba(picture));
}

TEST(PngWriter, doesTheWorkAloneWhenNoThreadCanBeCreated) {
    pthread_attr_t usual;
    ASSERT_EQ(pthread_getattr_default_np(&usual), 0);
    pthread_attr_t impossible;
    ASSERT_EQ(pthread_attr_init(&impossible), 0);
    // A stack larger than all addresses.
    ASSERT_EQ(pthread_attr_setstacksize(&impossible, std::size_t{1} << 60), 0);
    ASSERT_EQ(pthread_setattr_default_np(&impossible), 0);
    expectKept(photograph(severalBands), 8);
    EXPECT_EQ(pthread_setattr_default_np(&usual), 0);
}

TEST(PngWriter, throwsWhenMemoryLacks) {
    Noise noise;
    const Picture picture = makePicture(
        {300, 1200, 3, 1}, [&](std::size_t, std::size_t y) { return y < 1000 ? y / 100 : noise.next(); });
    const std::string expected = *writeInto(amply(picture), picture, true);
    std::size_t before = 0;
    for (bool hasFailed = true; hasFailed; ++before) {
        std::vector<char> room(amply(picture));
        ImageOutput output(room);
        bool isWritten = false;
        try {
            const FailingAllocation failing(before);
            isWritten = write(picture, true, output);
            hasFailed = failing.hasFailed();
        } catch (const std::bad_alloc&) {
            continue;
        }
        // None has failed, or one that only a thread needed.
        EXPECT_TRUE(isWritten);
        EXPECT_TRUE(std::string_view(room.data(), output.written().size()) == expected);
    }
    EXPECT_GT(before, 10U) << "so many allocations have failed";
}

} // namespace
} // namespace tavel
