#include "Mac/ImageProperties.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>

namespace tavel {

bool operator==(const ImageSize& one, const ImageSize& other) {
    return one.width == other.width && one.height == other.height;
}

void PrintTo(const ImageSize& size, std::ostream* out) {
    *out << size.width << " x " << size.height;
}

namespace {

ImageProperties ofSize(std::optional<double> width, std::optional<double> height) {
    return {width, height, std::nullopt};
}

TEST(ImageProperties, giveTheSize) {
    EXPECT_EQ(sizeFrom(ofSize(6000, 5333)), (ImageSize{6000, 5333}));
    EXPECT_EQ(sizeFrom(ofSize(1, 32'000'000)), (ImageSize{1, 32'000'000}));
}

TEST(ImageProperties, giveNoSizeWithoutBothNumbers) {
    EXPECT_EQ(sizeFrom({}), std::nullopt);
    EXPECT_EQ(sizeFrom(ofSize(10, std::nullopt)), std::nullopt);
    EXPECT_EQ(sizeFrom(ofSize(std::nullopt, 10)), std::nullopt);
}

TEST(ImageProperties, giveTheIntegerPartOfANumber) {
    EXPECT_EQ(sizeFrom(ofSize(0.9, 1.9)), (ImageSize{0, 1}));
    EXPECT_EQ(sizeFrom(ofSize(-1.9, -2)), (ImageSize{-1, -2}));
}

TEST(ImageProperties, giveNoSizeForWhatIsNoNumberOfPixels) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const double number :
         {infinity, -infinity, std::numeric_limits<double>::quiet_NaN(), 1e300, -1e300}) {
        EXPECT_EQ(sizeFrom(ofSize(number, 10)), std::nullopt) << number;
        EXPECT_EQ(sizeFrom(ofSize(10, number)), std::nullopt) << number;
    }
}

TEST(ImageProperties, countAsExactUpToTheLimitOfWholeNumbers) {
    EXPECT_EQ(sizeFrom(ofSize(9007199254740992, 1)), (ImageSize{9007199254740992, 1}));
    EXPECT_EQ(sizeFrom(ofSize(9007199254740994, 1)), std::nullopt);
}

TEST(ImageProperties, haveAlphaOnlyIfTheySaySo) {
    EXPECT_TRUE(hasAlphaFrom({10, 10, true}));
    EXPECT_FALSE(hasAlphaFrom({10, 10, false}));
    EXPECT_FALSE(hasAlphaFrom({10, 10, std::nullopt}));
}

} // namespace
} // namespace tavel
