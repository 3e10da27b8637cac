#include "Mac/MacImageCodec.h"

#include "Mac/ImageSource.h"
#include "Tests/Mac/Double/DoubledMac.h"

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>

namespace tavel {

using namespace doubles;

namespace {

constexpr char16_t width[] = u"PixelWidth";
constexpr char16_t height[] = u"PixelHeight";
constexpr char16_t alpha[] = u"HasAlpha";

/// The bytes in an allocation of exactly their size, so that AddressSanitizer sees reads beyond it.
Bytes fileOf(std::string_view content) {
    std::shared_ptr<char[]> buffer(new char[content.size()]);
    std::memcpy(buffer.get(), content.data(), content.size());
    const char* const data = buffer.get();
    return {std::move(buffer), data, content.size()};
}

class DoubledImageCodec : public DoubledMac {
protected:
    DoubledImageCodec() {
        imageFiles().type = u"public.tiff";
        imageFiles().properties = {{width, std::int64_t{640}}, {height, std::int64_t{480}}, {alpha, true}};
    }

    std::optional<std::pair<std::int64_t, std::int64_t>> measured() {
        const auto size = codec_.measure(file_);
        return size ? std::optional(std::pair(size->width, size->height)) : std::nullopt;
    }

    /// Expects that the codec has no answer to any question.
    void expectNoAnswer() {
        EXPECT_FALSE(codec_.measure(file_));
        EXPECT_FALSE(codec_.typeIdentifier(file_));
        EXPECT_FALSE(codec_.hasAlpha(file_));
        EXPECT_FALSE(codec_.encodePng(file_));
        EXPECT_FALSE(codec_.encodeJpeg(file_, 0.5));
    }

    MacImageCodec codec_;
    Bytes file_ = fileOf("a picture");
};

} // namespace

TEST_F(DoubledImageCodec, reportsSizeTypeAndAlpha) {
    EXPECT_EQ(measured(), std::pair(640L, 480L));
    EXPECT_EQ(codec_.typeIdentifier(file_), "public.tiff");
    EXPECT_EQ(codec_.hasAlpha(file_), true);
    (*imageFiles().properties)[alpha] = false;
    EXPECT_EQ(codec_.hasAlpha(file_), false);
}

TEST_F(DoubledImageCodec, letsOnlyFormatsBeDecodedThatItNeeds) {
    for (const char16_t* const wanted : {u"public.heic", u"org.webmproject.webp", u"com.microsoft.bmp"}) {
        imageFiles().type = wanted;
        EXPECT_EQ(measured(), std::pair(640L, 480L));
    }
    imageFiles().type = u"com.adobe.photoshop-image";
    expectNoAnswer();
}

TEST_F(DoubledImageCodec, acceptsIntegersAndDoubles) {
    imageFiles().properties = {{width, 640.0}, {height, 480.75}};
    EXPECT_EQ(measured(), std::pair(640L, 480L));
}

/// The last of these numbers lies between two values of type double.
TEST_F(DoubledImageCodec, hasNoSizeWithoutTwoPixelCounts) {
    const double infinite = std::numeric_limits<double>::infinity();
    for (const Value& value :
         {Value(u"640"), Value(true), Value(std::nan("")), Value(infinite), Value(-infinite),
          Value(std::numeric_limits<std::int64_t>::max()), Value(std::int64_t{9007199254740993})}) {
        for (const auto* const side : {width, height}) {
            imageFiles().properties = {{width, 1.0}, {height, 1.0}};
            (*imageFiles().properties)[side] = value;
            EXPECT_EQ(measured(), std::nullopt) << value.index();
            imageFiles().properties->erase(side);
            EXPECT_EQ(measured(), std::nullopt);
        }
    }
}

TEST_F(DoubledImageCodec, ignoresAlphaThatIsNoBoolean) {
    for (const Value& value : {Value(std::int64_t{1}), Value(1.0), Value(u"true")}) {
        (*imageFiles().properties)[alpha] = value;
        EXPECT_EQ(codec_.hasAlpha(file_), false);
    }
    imageFiles().properties->erase(alpha);
    EXPECT_EQ(codec_.hasAlpha(file_), false);
    EXPECT_EQ(measured(), std::pair(640L, 480L));
}

TEST_F(DoubledImageCodec, hasNoAnswerWithoutASource) {
    imageFiles().opens = false;
    expectNoAnswer();
}

TEST_F(DoubledImageCodec, hasNoAnswerForWhatIsNoImage) {
    imageFiles().type.reset();
    imageFiles().properties.reset();
    imageFiles().decodes = false;
    expectNoAnswer();
}

TEST_F(DoubledImageCodec, opensNoEmptyFile) {
    file_ = Bytes();
    expectNoAnswer();
    file_ = fileOf("");
    expectNoAnswer();
    EXPECT_EQ(imageFiles().openedBytes, nullptr);
}

TEST_F(DoubledImageCodec, readsTheFilesOwnBytes) {
    const std::function<void()> questions[] = {
        [&] { codec_.measure(file_); }, [&] { codec_.typeIdentifier(file_); },
        [&] { codec_.hasAlpha(file_); }, [&] { codec_.encodePng(file_); },
        [&] { codec_.encodeJpeg(file_, 1); }};
    for (const auto& ask : questions) {
        imageFiles().openedBytes = nullptr;
        ask();
        EXPECT_EQ(imageFiles().openedBytes, file_.data());
    }
}

TEST_F(DoubledImageCodec, encodesPngWithoutSettings) {
    const auto png = codec_.encodePng(file_);
    ASSERT_TRUE(png);
    EXPECT_EQ(png->view(), encodedText("public.png", "a picture", std::nullopt));
}

TEST_F(DoubledImageCodec, encodesJpegWithTheQuality) {
    for (const double quality : {0.0, 0.85, 1.0}) {
        const auto jpeg = codec_.encodeJpeg(file_, quality);
        ASSERT_TRUE(jpeg);
        EXPECT_EQ(jpeg->view(), encodedText("public.jpeg", "a picture", quality));
    }
}

TEST_F(DoubledImageCodec, sharesEncodedBytesThatOutliveFileAndCodec) {
    std::optional<Bytes> png = MacImageCodec().encodePng(file_);
    ASSERT_TRUE(png);
    EXPECT_EQ(png->data(), imageFiles().writtenBytes);
    file_ = Bytes();
    Bytes part = png->slice(png->size() - 7, 7);
    EXPECT_EQ(part.data(), png->data() + png->size() - 7);
    png.reset();
    std::thread([last = std::exchange(part, {})]() mutable {
        EXPECT_EQ(last.view(), "picture");
        last = {};
    }).join();
}

TEST_F(DoubledImageCodec, theSourceKeepsTheFilesBytes) {
    std::optional<ImageSource> source(std::in_place, file_);
    file_ = Bytes();
    const auto image = source->image();
    const auto data = CFRef<CFMutableDataRef>::adopt(CFDataCreateMutable(kCFAllocatorDefault, 0));
    const auto destination = CFRef<CGImageDestinationRef>::adopt(
        CGImageDestinationCreateWithData(data.get(), CFSTR("public.png"), 1, nullptr));
    CGImageDestinationAddImage(destination.get(), image.get(), nullptr);
    EXPECT_TRUE(CGImageDestinationFinalize(destination.get()));
    EXPECT_EQ(CFDataGetLength(data.get()), static_cast<CFIndex>(std::strlen("public.png of a picture")));
}

TEST_F(DoubledImageCodec, encodesNothingThatCannotBeDecoded) {
    imageFiles().decodes = false;
    EXPECT_FALSE(codec_.encodePng(file_));
    EXPECT_FALSE(codec_.encodeJpeg(file_, 1));
    EXPECT_EQ(measured(), std::pair(640L, 480L));
}

TEST_F(DoubledImageCodec, encodesNothingWithoutTheEncoder) {
    imageFiles().encoders = {u"public.png"};
    EXPECT_TRUE(codec_.encodePng(file_));
    EXPECT_FALSE(codec_.encodeJpeg(file_, 1));
    imageFiles().encoders = {u"public.jpeg"};
    EXPECT_FALSE(codec_.encodePng(file_));
    EXPECT_TRUE(codec_.encodeJpeg(file_, 1));
}

TEST_F(DoubledImageCodec, encodesNothingIfFinishingFails) {
    imageFiles().finishes = false;
    EXPECT_FALSE(codec_.encodePng(file_));
    EXPECT_FALSE(codec_.encodeJpeg(file_, 1));
}

TEST_F(DoubledImageCodec, canEncodeTheTypesOfTheSystemsEncoders) {
    EXPECT_TRUE(codec_.canEncode("public.png"));
    EXPECT_TRUE(codec_.canEncode(std::string_view("public.png and more").substr(0, 10)));
    EXPECT_TRUE(codec_.canEncode("public.jpeg"));
    for (const std::string_view other :
         {std::string_view(), std::string_view(""), std::string_view("public.pn"),
          std::string_view("public.tiff"), std::string_view("\xFF"),
          std::string_view("\xEF\xBB\xBFpublic.png")})
        EXPECT_FALSE(codec_.canEncode(other)) << other;
}

} // namespace tavel
