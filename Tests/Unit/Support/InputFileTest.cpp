#include "Support/InputFile.h"

#include "Support/FileError.h"
#include "Tests/Unit/Fixtures/ForkedFunction.h"
#include "Tests/Unit/Fixtures/Random.h"
#include "Tests/Unit/Fixtures/ScratchDirectory.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace tavel {
namespace {

namespace fs = std::filesystem;
using Links = InputFile::Links;

constexpr std::size_t noLimit = std::numeric_limits<std::size_t>::max();

std::string contentOf(const fs::path& path, std::size_t limit = noLimit, Links links = Links::refuse) {
    return std::string(InputFile(path.string(), links).read(limit).view());
}

std::optional<FileError> openingError(const std::string& path, Links links = Links::follow) {
    try {
        const InputFile file(path, links);
        return std::nullopt;
    } catch (const FileError& error) {
        return error;
    }
}

/// The errno with which opening fails; 0 if it succeeds.
int openingCode(const std::string& path, Links links = Links::follow) {
    const auto error = openingError(path, links);
    return error ? error->code() : 0;
}

void append(const fs::path& path, std::string_view content) {
    std::ofstream(path, std::ios::app) << content;
}

TEST(InputFile, readsWhatTheFileHolds) {
    const ScratchDirectory scratch;
    Random random(1);
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, std::size_t{4096}, std::size_t{3'000'000}}) {
        const std::string content = random.bytes(size);
        InputFile file(scratch.makeFile("file", content).string(), Links::refuse);
        EXPECT_EQ(file.size(), size);
        EXPECT_TRUE(file.read(noLimit).view() == content) << size << " bytes";
    }
}

TEST(InputFile, readsNoMoreThanTheLimit) {
    const ScratchDirectory scratch;
    const fs::path file = scratch.makeFile("file", "0123456789");
    EXPECT_EQ(contentOf(file, 0), "");
    EXPECT_EQ(contentOf(file, 1), "0");
    EXPECT_EQ(contentOf(file, 9), "012345678");
    EXPECT_EQ(contentOf(file, 10), "0123456789");
    EXPECT_EQ(contentOf(file, 11), "0123456789");
}

TEST(InputFile, goesOnWhereTheLastReadingEnded) {
    const ScratchDirectory scratch;
    InputFile file(scratch.makeFile("file", "0123456789").string(), Links::refuse);
    EXPECT_EQ(file.read(4).view(), "0123");
    EXPECT_EQ(file.read(4).view(), "4567");
    EXPECT_EQ(file.read(4).view(), "89");
    EXPECT_EQ(file.read(4).view(), "");
    EXPECT_EQ(file.size(), 10U);
}

TEST(InputFile, readsWhatWasAddedSinceItWasOpened) {
    const ScratchDirectory scratch;
    Random random(2);
    for (const std::size_t added :
         {std::size_t{1}, std::size_t{2}, std::size_t{70'000}, std::size_t{1'000'000}}) {
        const std::string more = random.bytes(added);
        const fs::path path = scratch.makeFile("file", "start ");
        InputFile file(path.string(), Links::refuse);
        append(path, more);
        EXPECT_EQ(file.size(), 6U);
        EXPECT_TRUE(file.read(noLimit).view() == "start " + more) << added << " bytes";
    }
}

TEST(InputFile, readsNoMoreThanTheLimitOfAFileThatHasGrown) {
    const ScratchDirectory scratch;
    const fs::path path = scratch.makeFile("file", "start ");
    for (const std::size_t limit : {std::size_t{7}, std::size_t{65'543}, std::size_t{100'000}}) {
        InputFile file(path.string(), Links::refuse);
        append(path, std::string(200'000, 'x'));
        EXPECT_EQ(file.read(limit).size(), limit);
    }
}

TEST(InputFile, readsWhatIsLeftOfAFileThatHasShrunk) {
    const ScratchDirectory scratch;
    for (const std::size_t left : {std::size_t{9}, std::size_t{1}, std::size_t{0}}) {
        const fs::path path = scratch.makeFile("file", "0123456789");
        InputFile file(path.string(), Links::refuse);
        fs::resize_file(path, left);
        EXPECT_EQ(file.size(), 10U);
        EXPECT_EQ(file.read(noLimit).view(), std::string_view("0123456789").substr(0, left));
    }
}

TEST(InputFile, takesMemoryForItsLimitAndNotForTheSizeOfTheFile) {
    const ScratchDirectory scratch;
    const fs::path path = scratch.makeFile("file", "start");
    constexpr std::uintmax_t tebibyte = std::uintmax_t{1} << 40; // too large to allocate
    fs::resize_file(path, tebibyte);
    InputFile file(path.string(), Links::refuse);
    EXPECT_EQ(file.size(), tebibyte);
    EXPECT_EQ(file.read(100).view(), "start" + std::string(95, '\0'));
}

TEST(InputFile, keepsItsBytesWhenItIsClosed) {
    const ScratchDirectory scratch;
    const std::string path = scratch.makeFile("file").string();
    std::optional<InputFile> file(std::in_place, path, Links::refuse);
    const Bytes content = file->read(noLimit);
    file.reset();
    fs::remove(path);
    EXPECT_EQ(content.view(), "content");
}

TEST(InputFile, followsALinkOnlyIfThatIsAsked) {
    const ScratchDirectory scratch;
    fs::create_symlink(scratch.makeFile("file"), scratch / "link");
    const std::string link = (scratch / "link").string();
    EXPECT_EQ(contentOf(link, noLimit, Links::follow), "content");
    const auto error = openingError(link, Links::refuse);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), ELOOP);
    EXPECT_EQ(error->description(), link + ": " + std::strerror(ELOOP));
}

TEST(InputFile, refusesALinkOnlyAsThePathsLastPart) {
    const ScratchDirectory scratch;
    fs::create_directory(scratch / "directory");
    scratch.makeFile("directory/file");
    fs::create_directory_symlink(scratch / "directory", scratch / "link");
    EXPECT_EQ(contentOf(scratch / "link/file", noLimit, Links::refuse), "content");
}

TEST(InputFile, findsNothingBehindADanglingLink) {
    const ScratchDirectory scratch;
    fs::create_symlink(scratch / "missing", scratch / "dangling");
    EXPECT_EQ(openingCode((scratch / "dangling").string(), Links::follow), ENOENT);
    EXPECT_EQ(openingCode((scratch / "dangling").string(), Links::refuse), ELOOP);
}

TEST(InputFile, refusesADirectory) {
    const ScratchDirectory scratch;
    const std::string directory = scratch.path().string();
    for (const Links links : {Links::follow, Links::refuse}) {
        const auto error = openingError(directory, links);
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code(), EISDIR);
        EXPECT_EQ(error->description(), directory + ": " + std::strerror(EISDIR));
    }
}

TEST(InputFile, refusesAFifoWithoutWaitingForItsWriter) {
    const ScratchDirectory scratch;
    const std::string fifo = (scratch / "fifo").string();
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(openingCode(fifo, Links::follow), EINVAL);
    EXPECT_EQ(openingCode(fifo, Links::refuse), EINVAL);
}

TEST(InputFile, refusesDevicesAndSockets) {
    const ScratchDirectory scratch;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = (scratch / "socket").string();
    ASSERT_LT(path.size(), sizeof address.sun_path);
    path.copy(address.sun_path, path.size());
    const int socketDescriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_GE(socketDescriptor, 0);
    EXPECT_EQ(bind(socketDescriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(openingCode(path), ENXIO);
    close(socketDescriptor);
    EXPECT_EQ(openingCode("/dev/null"), EINVAL);
    EXPECT_EQ(openingCode("/dev/zero"), EINVAL);
}

TEST(InputFile, findsNothingUnderAPathWithAZeroByte) {
    const ScratchDirectory scratch;
    const std::string file = scratch.makeFile("file").string();
    EXPECT_EQ(openingCode(file + '\0'), ENOENT);
    EXPECT_EQ(openingCode(file + '\0' + "tail"), ENOENT);
    EXPECT_EQ(openingCode(std::string(1, '\0')), ENOENT);
}

TEST(InputFile, tellsWhyAPathNamesNothing) {
    const ScratchDirectory scratch;
    const std::string file = scratch.makeFile("file").string();
    EXPECT_EQ(openingCode(file), 0);
    EXPECT_EQ(openingCode(file + "2"), ENOENT);
    EXPECT_EQ(openingCode(""), ENOENT);
    EXPECT_EQ(openingCode(file + "/below"), ENOTDIR);
    EXPECT_EQ(openingCode(file + "/"), ENOTDIR);
    EXPECT_EQ(openingCode((scratch / std::string(256, 'n')).string()), ENAMETOOLONG);
    const auto error = openingError(file + "2");
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), "POSIX");
    EXPECT_EQ(error->operation(), FileError::Operation::read);
    EXPECT_EQ(error->path(), file + "2");
    EXPECT_EQ(error->description(), file + "2: " + std::strerror(ENOENT));
}

TEST(InputFile, tellsThatItCannotBeClosed) {
    const ScratchDirectory scratch;
    const std::string file = scratch.makeFile("file").string();
    const int next = dup(STDIN_FILENO); // a file gets the lowest free descriptor
    close(next);
    InputFile input(file, Links::refuse);
    ASSERT_EQ(close(next), 0);
    try {
        input.close();
        FAIL() << "It closed what was closed already.";
    } catch (const FileError& error) {
        EXPECT_EQ(error.code(), EBADF);
        EXPECT_EQ(error.operation(), FileError::Operation::read);
        EXPECT_EQ(error.path(), file);
    }
}

TEST(InputFile, tellsThatItMayNotBeRead) {
    const ScratchDirectory scratch;
    const std::string file = scratch.makeFile("file").string();
    fs::permissions(scratch.path(), fs::perms{0711});
    fs::permissions(file, fs::perms{0000});
    EXPECT_EQ(exitStatusOf([&] {
                  dropRootRights();
                  return openingCode(file) == EACCES ? 0 : 1;
              }),
              0);
}

} // namespace
} // namespace tavel
