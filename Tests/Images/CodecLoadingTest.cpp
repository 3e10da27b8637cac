#include "Tests/Images/Pictures.h"
#include "Tests/Unit/Fixtures/ScratchDirectory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace tavel {
namespace {

TEST(CodecLoading, mapsNoImageLibraryIntoTheAgent) {
    EXPECT_TRUE(codec().encodePng(Bytes::copyOf(readPicture("jpeg-baseline.jpg"))));
    EXPECT_TRUE(codec().encodePng(Bytes::copyOf(readPicture("heif-avif.avif"))));
    EXPECT_FALSE(isMapped("vips"));
    EXPECT_FALSE(isMapped("libheif"));
}

/// All that a codec does without its program, and the messages that it logs.
std::vector<std::string> complaintsWithout(const std::filesystem::path& program) {
    std::vector<std::string> messages;
    ProcessImageCodec codec([&](const std::string& message) { messages.push_back(message); }, program);
    const Bytes jpeg = Bytes::copyOf(readPicture("jpeg-baseline.jpg"));
    EXPECT_TRUE(codec.measure(jpeg));
    EXPECT_FALSE(codec.encodePng(Bytes::copyOf("no picture")));
    EXPECT_FALSE(codec.encodeJpeg(Bytes::copyOf("no picture"), 0.8));
    EXPECT_TRUE(messages.empty());
    EXPECT_FALSE(codec.encodePng(jpeg));
    EXPECT_FALSE(codec.encodeJpeg(jpeg, 0.8));
    EXPECT_FALSE(codec.hasAlpha(jpeg));
    EXPECT_FALSE(codec.measure(Bytes::copyOf(readPicture("heif-avif.avif"))));
    return messages;
}

TEST(CodecLoading, saysOnceThatThereIsNoProgram) {
    const ScratchDirectory directory;
    const auto broken = directory.makeFile("broken");
    std::filesystem::permissions(broken, std::filesystem::perms::owner_all);
    const auto unlinked = directory.makeFile("unlinked", "#!/bin/sh\nexit 127\n");
    std::filesystem::permissions(unlinked, std::filesystem::perms::owner_all);
    for (const std::filesystem::path& program :
         {directory / "missing", directory.makeFile("no-program"), broken, unlinked,
          std::filesystem::relative(imageProgramPath())}) {
        const auto messages = complaintsWithout(program);
        ASSERT_EQ(messages.size(), 1U) << program;
        EXPECT_NE(messages.front().find(program.string()), std::string::npos) << messages.front();
    }
}

TEST(CodecLoading, encodesNothingWithoutAProgram) {
    ProcessImageCodec codec([](const std::string&) {}, "/missing");
    EXPECT_FALSE(codec.canEncode("public.png"));
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
