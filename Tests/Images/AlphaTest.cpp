#include "Tests/Images/Pictures.h"

#include <gtest/gtest.h>

#include <string>

namespace tavel {
namespace {

std::optional<bool> alphaOf(const std::string& name) {
    return codec().hasAlpha(Bytes::copyOf(readPicture(name)));
}

TEST(Alpha, isFoundInEveryFormatThatHasIt) {
    for (const std::string name :
         {"alpha.png", "png-4-8.png", "png-4-16.png", "png-6-8.png", "png-6-16.png", "tiff-alpha.tif"})
        EXPECT_EQ(alphaOf(name), true) << name;
}

TEST(Alpha, isNotFoundWhereThereIsNone) {
    for (const std::string name : {"base.png", "png-0-1.png", "png-0-16.png", "png-2-8.png", "png-2-16.png",
                                   "png-3-8.png", "tiff-LZW.tif", "tiff-grey.tif", "tiff-cmyk.tif",
                                   "tiff-palette.tif", "jpeg-cmyk.jpg", "jpeg-baseline.jpg", "bmp-24.bmp"})
        EXPECT_EQ(alphaOf(name), false) << name;
}

TEST(Alpha, ofWhatIsNoPictureIsUnknown) {
    EXPECT_EQ(codec().hasAlpha(Bytes::copyOf("no picture")), std::nullopt);
    EXPECT_EQ(codec().hasAlpha(Bytes::copyOf(readPicture("base.png").substr(0, 20))), std::nullopt);
}

TEST(Encoders, arePngAndJpeg) {
    EXPECT_TRUE(codec().canEncode("public.png"));
    EXPECT_TRUE(codec().canEncode("public.jpeg"));
    EXPECT_FALSE(codec().canEncode("public.tiff"));
    EXPECT_FALSE(codec().canEncode(""));
}

} // namespace
} // namespace tavel
