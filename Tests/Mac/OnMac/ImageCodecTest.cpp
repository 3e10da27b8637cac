#include "Mac/MacImageCodec.h"
#include "Support/Base64.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace tavel {

namespace {

/// Three pixels wide and two high.
constexpr std::string_view opaquePng =
    "iVBORw0KGgoAAAANSUhEUgAAAAMAAAACCAIAAAASFvFNAAAAEUlEQVR42mP4z8AAQQwwxn8AO9gF+0SiCbsAAAAASUVORK5CYII=";
constexpr std::string_view transparentPng =
    "iVBORw0KGgoAAAANSUhEUgAAAAMAAAACCAYAAACddGYaAAAAFElEQVR42mP4z8DQAMMMDAz/"
    "4RgAa8kHe+aYm4gAAAAASUVORK5CYII=";

Bytes decoded(std::string_view base64) {
    return decodeBase64(base64).value();
}

void expectThreeByTwo(MacImageCodec& codec, const std::optional<Bytes>& picture) {
    ASSERT_TRUE(picture);
    const auto size = codec.measure(*picture);
    ASSERT_TRUE(size);
    EXPECT_EQ(size->width, 3);
    EXPECT_EQ(size->height, 2);
}

} // namespace

TEST(MacImageCodec, knowsAPicturesSizeTypeAndAlpha) {
    MacImageCodec codec;
    expectThreeByTwo(codec, decoded(opaquePng));
    EXPECT_EQ(codec.typeIdentifier(decoded(opaquePng)), "public.png");
    EXPECT_EQ(codec.hasAlpha(decoded(opaquePng)), false);
    EXPECT_EQ(codec.hasAlpha(decoded(transparentPng)), true);
}

TEST(MacImageCodec, writesJpeg) {
    MacImageCodec codec;
    const auto jpeg = codec.encodeJpeg(decoded(opaquePng), 0.9);
    expectThreeByTwo(codec, jpeg);
    EXPECT_EQ(codec.typeIdentifier(*jpeg), "public.jpeg");
    EXPECT_TRUE(jpeg->view().starts_with("\xFF\xD8\xFF"));
    EXPECT_EQ(codec.hasAlpha(*jpeg), false);
}

TEST(MacImageCodec, writesPngWithItsAlpha) {
    MacImageCodec codec;
    const auto png = codec.encodePng(decoded(transparentPng));
    expectThreeByTwo(codec, png);
    EXPECT_EQ(codec.typeIdentifier(*png), "public.png");
    EXPECT_EQ(codec.hasAlpha(*png), true);
    const auto jpeg = codec.encodeJpeg(decoded(opaquePng), 1);
    ASSERT_TRUE(jpeg);
    expectThreeByTwo(codec, codec.encodePng(*jpeg));
}

TEST(MacImageCodec, knowsTheTypesThatItCanWrite) {
    MacImageCodec codec;
    EXPECT_TRUE(codec.canEncode("public.png"));
    EXPECT_TRUE(codec.canEncode("public.jpeg"));
    EXPECT_FALSE(codec.canEncode("net.example.none"));
    EXPECT_FALSE(codec.canEncode("\xFF"));
}

TEST(MacImageCodec, hasNoAnswerForOtherFiles) {
    MacImageCodec codec;
    for (const std::string_view content :
         {std::string_view(), std::string_view("GIF89"), std::string_view("text")}) {
        const Bytes file = Bytes::copyOf(content);
        EXPECT_FALSE(codec.measure(file)) << content;
        EXPECT_FALSE(codec.hasAlpha(file)) << content;
        EXPECT_FALSE(codec.encodePng(file)) << content;
        EXPECT_FALSE(codec.encodeJpeg(file, 0.9)) << content;
    }
    EXPECT_FALSE(codec.typeIdentifier(Bytes()));
}

} // namespace tavel
