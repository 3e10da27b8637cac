#include "ImageHeaders/ImageHeader.h"
#include "Linux/Base/SpawnedProgram.h"
#include "Linux/Images/HeifBrand.h"
#include "Linux/Images/MemoryFile.h"
#include "Tests/Images/Pictures.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>

namespace tavel {
namespace {

struct Outcome {
    int status = 0;     // as waitpid(2) gives it
    std::string errors; // on standard error
};

/// Runs the program as the agent does, but with a standard error that can be read.
Outcome runProgram(ImageTask task, std::string_view type, std::string_view picture) {
    const Descriptor null(open("/dev/null", O_RDWR | O_CLOEXEC));
    const Descriptor file = sealedCopy(picture);
    const Descriptor answer = zeros(answerFileSize);
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    const Descriptor reading(ends[0]);
    const std::array descriptors{null.number(), null.number(), ends[1], file.number(), answer.number()};
    const pid_t process = spawnProgram(
        imageProgramPath(), argumentsFor({getpid(), task, std::string(type), 0.8}), environ, descriptors);
    close(ends[1]);
    Outcome run;
    std::array<char, 256> buffer{};
    for (ssize_t size = 0; (size = read(reading.number(), buffer.data(), buffer.size())) > 0;)
        run.errors.append(buffer.data(), static_cast<std::size_t>(size));
    waitpid(process, &run.status, 0);
    return run;
}

class ImageCorpus : public testing::TestWithParam<const char*> {};

/// The lock must not stop a decoder in what it usually does, whatever it thinks of the picture.
TEST_P(ImageCorpus, endsTheProgramNeitherByASignalNorWithAComplaint) {
    int converted = 0;
    for (const auto& entry : std::filesystem::directory_iterator(GetParam())) {
        std::ifstream stream(entry.path(), std::ios::binary);
        const std::string picture{std::istreambuf_iterator<char>(stream), {}};
        const auto header = readImageHeader(picture);
        const auto type = header ? std::optional(header->typeIdentifier) : heifTypeIdentifier(picture);
        if (!type)
            continue;
        for (const ImageTask task :
             {ImageTask::measure, ImageTask::hasAlpha, ImageTask::encodePng, ImageTask::encodeJpeg}) {
            if (task == ImageTask::measure && header)
                continue; // the agent never asks for it
            const Outcome run = runProgram(task, *type, picture);
            EXPECT_TRUE(WIFEXITED(run.status))
                << entry << ", task " << static_cast<int>(task) << ": signal " << WTERMSIG(run.status);
            EXPECT_EQ(run.errors, "") << entry;
            converted += run.status == 0 ? 1 : 0;
        }
    }
    EXPECT_GT(converted, 0);
}

INSTANTIATE_TEST_SUITE_P(Each, ImageCorpus, testing::Values(TAVEL_TEST_PICTURES, TAVEL_IMAGE_CORPUS));

} // namespace
} // namespace tavel
