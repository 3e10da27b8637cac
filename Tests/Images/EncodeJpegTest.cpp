#include "Tests/Images/Pictures.h"

#include <gtest/gtest.h>

#include <string>

namespace tavel {
namespace {

constexpr int step8 = 257; // one 8-bit step in 16-bit steps

std::string throughJpeg(const std::string& name, double quality) {
    const auto jpeg = codec().encodeJpeg(Bytes::copyOf(readPicture(name)), quality);
    return jpeg ? std::string(jpeg->view()) : std::string();
}

/// The mean distance between the source's pixels and those of its JPEG.
double meanDistance(const std::string& name, double quality) {
    const auto png = throughPng(throughJpeg(name, quality));
    if (!png)
        return 65'535;
    return distance(png->pixels, readPixels(name)).mean;
}

TEST(EncodeJpeg, keepsThePixelsAtTheHighestQuality) {
    for (const std::string name : {"png-0-1", "png-0-2", "png-0-4", "png-0-8", "png-0-16", "png-2-8",
                                   "png-2-16", "png-3-1", "png-3-2", "png-3-4", "png-3-8"})
        EXPECT_LT(meanDistance(name + ".png", 1), 2.0 * step8) << name;
    for (const std::string name :
         {"jpeg-progressive.jpg", "tiff-deep.tif", "webp-lossy.webp", "gif-static.gif", "bmp-24.bmp"})
        EXPECT_LT(meanDistance(name, 1), 2.0 * step8) << name;
}

TEST(EncodeJpeg, isTypedAsJpegAndKeepsTheSize) {
    const Bytes jpeg = Bytes::copyOf(throughJpeg("tiff-deep.tif", 0.5));
    EXPECT_EQ(codec().typeIdentifier(jpeg), "public.jpeg");
    EXPECT_EQ(codec().measure(jpeg)->width, pictureWidth);
    EXPECT_EQ(codec().measure(jpeg)->height, pictureHeight);
}

TEST(EncodeJpeg, growsWithItsQuality) {
    std::size_t last = 0;
    for (const double quality : {0.0, 0.3, 0.6, 0.82, 1.0}) {
        const std::size_t size = throughJpeg("base.png", quality).size();
        EXPECT_GT(size, last) << quality;
        last = size;
    }
    EXPECT_EQ(throughJpeg("base.png", -1).size(), throughJpeg("base.png", 0).size());
    EXPECT_EQ(throughJpeg("base.png", 2).size(), throughJpeg("base.png", 1).size());
}

TEST(EncodeJpeg, putsTransparentPicturesOnWhite) {
    for (const std::string name :
         {"png-6-8.png", "png-6-16.png", "png-4-8.png", "png-4-16.png", "png-interlaced.png"}) {
        const auto png = throughPng(throughJpeg(name, 1));
        ASSERT_TRUE(png) << name;
        auto expected = readPixels(name);
        for (std::size_t i = 0; i < expected.size(); i += 4) {
            const double alpha = expected[i + 3] / 65'535.0;
            for (std::size_t sample = i; sample < i + 3; ++sample)
                expected[sample] =
                    static_cast<std::uint16_t>(expected[sample] * alpha + 65'535 * (1 - alpha));
            expected[i + 3] = 65'535;
        }
        EXPECT_LT(distance(png->pixels, expected).mean, 2.0 * step8) << name;
    }
}

TEST(EncodeJpeg, keepsTheProfileAndNothingElse) {
    const auto before = throughPng(readPicture("jpeg-profile.jpg"));
    const std::string jpeg = throughJpeg("jpeg-profile.jpg", 0.9);
    const auto after = throughPng(jpeg);
    ASSERT_TRUE(before && after);
    EXPECT_FALSE(after->profile.empty());
    EXPECT_TRUE(after->profile == before->profile);
    EXPECT_EQ(jpeg.find("Exif"), std::string::npos);
    EXPECT_EQ(throughPng(throughJpeg("base.png", 0.9))->profile, "");
}

} // namespace
} // namespace tavel
