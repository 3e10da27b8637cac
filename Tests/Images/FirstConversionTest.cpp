// A separate program, because a loaded library stays loaded.

#include "Tests/Images/Pictures.h"

#include <gtest/gtest.h>

#include <string>

namespace tavel {
namespace {

TEST(FirstConversion, loadsTheLibraryThatMeasuringDoesWithout) {
    for (const std::string name : {"base.png", "jpeg-baseline.jpg", "gif-static.gif", "tiff-LZW.tif",
                                   "webp-lossy.webp", "bmp-24.bmp"}) {
        EXPECT_TRUE(codec().measure(Bytes::copyOf(readPicture(name)))) << name;
        EXPECT_TRUE(codec().typeIdentifier(Bytes::copyOf(readPicture(name)))) << name;
    }
    EXPECT_FALSE(codec().measure(Bytes::copyOf("no picture")));
    EXPECT_FALSE(codec().encodePng(Bytes::copyOf("no picture")));
    EXPECT_FALSE(codec().encodeJpeg(Bytes::copyOf("no picture"), 0.8));
    EXPECT_FALSE(isMapped("libvips"));
    EXPECT_FALSE(isMapped("tavel-images"));

    EXPECT_TRUE(codec().encodePng(Bytes::copyOf(readPicture("jpeg-baseline.jpg"))));
    EXPECT_TRUE(isMapped("libvips"));
}

} // namespace
} // namespace tavel
