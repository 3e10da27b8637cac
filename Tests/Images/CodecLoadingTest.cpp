#include "Tests/Images/Pictures.h"
#include "Tests/Unit/Fixtures/ScratchDirectory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace tavel {
namespace {

TEST(CodecLoading, loadsNoReaderOfFormatsThatNobodyAskedFor) {
    EXPECT_TRUE(codec().encodePng(Bytes::copyOf(readPicture("jpeg-baseline.jpg"))));
    EXPECT_TRUE(codec().encodePng(Bytes::copyOf(readPicture("heif-avif.avif"))));
    EXPECT_TRUE(isMapped("vips-heif"));
    EXPECT_FALSE(isMapped("vips-magick"));
    EXPECT_FALSE(isMapped("vips-poppler"));
}

TEST(CodecLoading, saysOnceThatThereIsNoModule) {
    const ScratchDirectory directory;
    for (const std::filesystem::path& module : {directory / "missing.so", directory.makeFile("broken.so")}) {
        std::vector<std::string> messages;
        OnDemandImageCodec codec([&](const std::string& message) { messages.push_back(message); }, module);
        const Bytes jpeg = Bytes::copyOf(readPicture("jpeg-baseline.jpg"));
        EXPECT_TRUE(codec.measure(jpeg));
        EXPECT_TRUE(messages.empty());
        EXPECT_FALSE(codec.encodePng(jpeg));
        EXPECT_FALSE(codec.encodeJpeg(jpeg, 0.8));
        EXPECT_FALSE(codec.hasAlpha(jpeg));
        EXPECT_FALSE(codec.canEncode("public.png"));
        EXPECT_FALSE(codec.measure(Bytes::copyOf(readPicture("heif-avif.avif"))));
        ASSERT_EQ(messages.size(), 1U);
        EXPECT_NE(messages.front().find(module.string()), std::string::npos) << messages.front();
    }
}

TEST(CodecLoading, worksOnSeveralThreads) {
    const std::vector<std::string> names{"jpeg-baseline.jpg", "tiff-LZW.tif", "gif-static.gif",
                                         "webp-lossy.webp"};
    std::vector<std::string> results(names.size());
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < names.size(); ++i) {
        threads.emplace_back([&, i] {
            const Bytes file = Bytes::copyOf(readPicture(names[i]));
            for (int round = 0; round < 5; ++round) {
                if (const auto png = codec().encodePng(file))
                    results[i] = png->view();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (std::size_t i = 0; i < names.size(); ++i) {
        const auto png = decodePng(results[i]);
        ASSERT_TRUE(png) << names[i];
        EXPECT_LE(distance(png->pixels, readPixels(names[i])).largest, 257) << names[i];
    }
}

} // namespace
} // namespace tavel
