#include "Tests/Images/Pictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>

namespace tavel {
namespace {

TEST(BmpImage, readsRowsFromTheTopDown) {
    constexpr std::size_t heightPlace = 22;
    const std::string file = readPicture("bmp-24.bmp");
    std::string turned = file;
    const auto negative = static_cast<std::uint32_t>(-pictureHeight);
    for (std::size_t i = 0; i < 4; ++i)
        turned[heightPlace + i] = static_cast<char>(static_cast<unsigned char>(negative >> 8 * i & 0xFF));
    const auto upright = throughPng(file);
    const auto upsideDown = throughPng(turned);
    ASSERT_TRUE(upright && upsideDown);
    ASSERT_EQ(upsideDown->height, pictureHeight);
    const std::size_t rowSize = std::size_t{4} * pictureWidth;
    for (std::size_t y = 0; y < pictureHeight; ++y) {
        const auto row = upright->pixels.begin() + static_cast<std::ptrdiff_t>(y * rowSize);
        const auto other = upsideDown->pixels.end() - static_cast<std::ptrdiff_t>((y + 1) * rowSize);
        ASSERT_TRUE(std::equal(row, row + rowSize, other)) << y;
    }
}

TEST(BmpImage, isRefusedWithMoreColoursThanCanBeUsed) {
    constexpr std::size_t coloursPlace = 46;
    const std::string file = readPicture("bmp-24.bmp");
    for (const auto& [lower, upper, isRead] :
         {std::tuple{'\0', '\x01', true}, std::tuple{'\x01', '\x01', false},
          std::tuple{'\0', '\x7F', false}}) {
        std::string changed = file;
        changed[coloursPlace] = lower;
        changed[coloursPlace + 1] = upper;
        EXPECT_EQ(throughPng(changed).has_value(), isRead)
            << static_cast<int>(lower) << static_cast<int>(upper);
    }
}

} // namespace
} // namespace tavel
