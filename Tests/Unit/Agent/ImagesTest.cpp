#include "TavelClipboardAgent/main/Images.h"

#include "Tests/Unit/Doubles/TestPlatform.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace tavel {
namespace {

Bytes picture(std::int64_t width, std::int64_t height) {
    return Bytes::adopt(scriptedPicture("jpeg", width, height));
}

bool isValid(std::int64_t width, std::int64_t height) {
    ScriptedImageCodec codec;
    return validImage(codec, picture(width, height));
}

TEST(Images, refuseWhatIsNoPicture) {
    ScriptedImageCodec codec;
    EXPECT_FALSE(validImage(codec, Bytes()));
    EXPECT_FALSE(validImage(codec, Bytes::copyOf("no picture")));
    EXPECT_FALSE(pngImage(codec, Bytes::copyOf("no picture")));
}

TEST(Images, allow32000000PixelsInAnyShape) {
    EXPECT_TRUE(isValid(1, 1));
    EXPECT_TRUE(isValid(8000, 4000));
    EXPECT_TRUE(isValid(6000, 5333));
    EXPECT_TRUE(isValid(1, 32'000'000));
    EXPECT_TRUE(isValid(32'000'000, 1));
}

TEST(Images, refuseOnePixelMore) {
    EXPECT_FALSE(isValid(6000, 5334));
    EXPECT_FALSE(isValid(1, 32'000'001));
    EXPECT_FALSE(isValid(32'000'001, 1));
    EXPECT_FALSE(isValid(1234, 25932)); // 88 pixels more
}

TEST(Images, refuseASideOfNoPixels) {
    EXPECT_FALSE(isValid(0, 1));
    EXPECT_FALSE(isValid(1, 0));
    EXPECT_FALSE(isValid(-1, 1));
    EXPECT_FALSE(isValid(1, -1));
    EXPECT_FALSE(isValid(-2, -2));
}

TEST(Images, refuseSidesWhoseProductOverflows) {
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    EXPECT_FALSE(isValid(most, most));
    EXPECT_FALSE(isValid(std::int64_t{1} << 32, std::int64_t{1} << 32)); // the product would be 0
}

TEST(Images, leaveAPngAsItIs) {
    ScriptedImageCodec codec;
    const Bytes png = Bytes::adopt(scriptedPicture(pngSignature, 2, 3) + "anything");
    const auto result = pngImage(codec, png);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->data(), png.data()); // the same buffer, not a copy
    EXPECT_EQ(result->size(), png.size());
    EXPECT_TRUE(codec.converted.empty());
}

TEST(Images, convertEverythingElseToPng) {
    ScriptedImageCodec codec;
    const auto result = pngImage(codec, picture(2, 3));
    ASSERT_TRUE(result);
    EXPECT_EQ(result->view(), scriptedPicture(pngSignature, 2, 3));
}

TEST(Images, neverConvertWhatIsTooLarge) {
    ScriptedImageCodec codec;
    EXPECT_FALSE(pngImage(codec, picture(6000, 5334)));
    EXPECT_FALSE(pngImage(codec, Bytes::adopt(scriptedPicture(pngSignature, 6000, 5334))));
    EXPECT_TRUE(codec.converted.empty());
}

TEST(Images, areNulloptWhenTheyCannotBeConverted) {
    ScriptedImageCodec codec;
    codec.converts = false;
    EXPECT_FALSE(pngImage(codec, picture(2, 3)));
}

} // namespace
} // namespace tavel
