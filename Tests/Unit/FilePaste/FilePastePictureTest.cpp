#include "Tests/Unit/FilePaste/FilePasteFixture.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {
namespace {

// Files made of PNG and TIFF. The feature always encodes them anew.

constexpr std::size_t mostImageBytes = 134'217'728;

class FilePastePicture : public FilePasteFixture {
protected:
    FilePastePicture() { show("public.png", "a PNG"); }

    /// Copies a picture of that type together with a text.
    void show(std::string_view type, std::string_view signature, std::int64_t width = 2,
              std::int64_t height = 3) {
        copy({representation(type, scriptedPicture(signature, width, height)),
              representation("public.utf8-plain-text", "text")});
    }

    std::string extension() { return fileData().ext; }

    bool isAllowed(std::int64_t width, std::int64_t height) {
        show("public.png", "a PNG", width, height);
        return extension() == "jpg";
    }
};

TEST_F(FilePastePicture, isEncodedAsPngWithAlpha) {
    platform.codec.alpha = true;
    for (const std::string_view type : {"public.png", "public.tiff"}) {
        show(type, "original");
        const FileData file = fileData();
        EXPECT_EQ(file.ext, "png") << type;
        EXPECT_EQ(file.data.view(), scriptedPicture(pngSignature, 2, 3)) << type;
    }
    EXPECT_TRUE(platform.codec.qualities.empty());
}

TEST_F(FilePastePicture, isEncodedAsJpegWithoutAlpha) {
    for (const std::optional<bool> alpha : {std::optional(false), std::optional<bool>()}) {
        platform.codec.alpha = alpha;
        for (const std::string_view type : {"public.png", "public.tiff"}) {
            show(type, "original");
            const FileData file = fileData();
            EXPECT_EQ(file.ext, "jpg") << type;
            EXPECT_EQ(file.data.view(), scriptedPicture(jpegSignature, 2, 3)) << type;
        }
    }
    EXPECT_EQ(platform.codec.qualities, (std::vector{0.9, 0.9, 0.9, 0.9}));
}

TEST_F(FilePastePicture, isEncodedEvenIfAlreadyInThatFormat) {
    platform.codec.alpha = true;
    show("public.png", std::string(pngSignature) + " with what else the file held");
    EXPECT_EQ(fileData().data.view(), scriptedPicture(pngSignature, 2, 3));
    EXPECT_EQ(platform.codec.converted.size(), 1U);
}

TEST_F(FilePastePicture, isThePngOfBoth) {
    copy({representation("public.tiff", scriptedPicture("a TIFF", 5, 6)),
          representation("public.png", scriptedPicture("a PNG", 2, 3))});
    EXPECT_EQ(fileData().data.view(), scriptedPicture(jpegSignature, 2, 3));
}

TEST_F(FilePastePicture, isNotTheTiffWhenThePngIsBroken) {
    for (const std::string& broken :
         {std::string("no picture"), std::string(), scriptedPicture("too large", 32769, 1)}) {
        copy({representation("public.png", broken),
              representation("public.tiff", scriptedPicture("a TIFF", 5, 6)),
              representation("public.utf8-plain-text", "text")});
        EXPECT_EQ(extension(), "txt");
    }
    EXPECT_TRUE(platform.codec.converted.empty());
}

TEST_F(FilePastePicture, hasAtMost32768PixelsASide) {
    EXPECT_TRUE(isAllowed(1, 1));
    EXPECT_TRUE(isAllowed(32768, 1));
    EXPECT_TRUE(isAllowed(1, 32768));
    EXPECT_TRUE(isAllowed(32768, 976));
    EXPECT_FALSE(isAllowed(32769, 1));
    EXPECT_FALSE(isAllowed(1, 32769));
    EXPECT_FALSE(isAllowed(32'000'000, 1));
}

TEST_F(FilePastePicture, hasAtMost32000000Pixels) {
    EXPECT_TRUE(isAllowed(8000, 4000));
    EXPECT_TRUE(isAllowed(4000, 8000));
    EXPECT_FALSE(isAllowed(8000, 4001));
    EXPECT_FALSE(isAllowed(8001, 4000));
    EXPECT_FALSE(isAllowed(32768, 977));
    EXPECT_FALSE(isAllowed(32768, 32768));
}

TEST_F(FilePastePicture, hasNoSideOfZeroPixels) {
    constexpr std::int64_t far = std::int64_t{1} << 62;
    for (const auto& [width, height] : {std::pair<std::int64_t, std::int64_t>{0, 1},
                                        {1, 0},
                                        {0, 0},
                                        {-1, 1},
                                        {1, -1},
                                        {-1, -1},
                                        {-far, 1},
                                        {far, far},
                                        {-far, -far}})
        EXPECT_FALSE(isAllowed(width, height)) << width << 'x' << height;
}

TEST_F(FilePastePicture, isConvertedOnlyAfterItsSizeWasChecked) {
    EXPECT_FALSE(isAllowed(8000, 4001));
    copy({representation("public.png", "no picture"), representation("public.utf8-plain-text", "text")});
    EXPECT_EQ(extension(), "txt");
    EXPECT_TRUE(platform.codec.converted.empty());
}

TEST_F(FilePastePicture, givesWayToTheTextWhenItCannotBeConverted) {
    platform.codec.converts = false;
    EXPECT_EQ(extension(), "txt");
    platform.codec.alpha = true;
    EXPECT_EQ(extension(), "txt");
}

TEST_F(FilePastePicture, failsWhenItCannotBeConvertedAndThereIsNoText) {
    platform.codec.converts = false;
    copy("public.png", scriptedPicture("a PNG", 2, 3));
    EXPECT_EQ(errorOf([this] { fileData(); }), "Tavel 4");
}

TEST_F(FilePastePicture, hasAtMost128MebibytesEncoded) {
    const std::size_t encoded = scriptedPicture(jpegSignature, 2, 3).size();
    platform.codec.extraEncodedBytes = mostImageBytes - encoded;
    {
        const FileData file = fileData();
        EXPECT_EQ(file.ext, "jpg");
        EXPECT_EQ(file.data.size(), mostImageBytes);
    }
    ++platform.codec.extraEncodedBytes;
    EXPECT_EQ(extension(), "txt");
}

TEST_F(FilePastePicture, cannotBeEncodedWithoutAnEncoder) {
    platform.codec.unknownTypes = {"public.jpeg"};
    EXPECT_EQ(errorOf([this] { fileData(); }), "Tavel 3") << "although there is a text";
    platform.codec.alpha = true;
    EXPECT_EQ(extension(), "png");
    platform.codec.unknownTypes = {"public.png"};
    EXPECT_EQ(errorOf([this] { fileData(); }), "Tavel 3");
    platform.codec.alpha = false;
    EXPECT_EQ(extension(), "jpg");
    EXPECT_EQ(platform.codec.converted.size(), 2U);
}

TEST_F(FilePastePicture, needsNoEncoderWhenItIsNoPicture) {
    platform.codec.unknownTypes = {"public.png", "public.jpeg"};
    EXPECT_FALSE(isAllowed(32769, 1));
    copy("public.jpeg", jpegSignature);
    EXPECT_EQ(extension(), "jpg") << "as it is";
}

} // namespace
} // namespace tavel
