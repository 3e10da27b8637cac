#include "Support/Files.h"

#include "Tests/Support/Permissions.h"
#include "Tests/Unit/Fixtures/ForkedFunction.h"
#include "Tests/Unit/Fixtures/ScratchDirectory.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <string>

namespace tavel {
namespace {

namespace fs = std::filesystem;

/// Creates the directory under that umask.
bool createUnder(mode_t mask, const fs::path& directory) {
    const UmaskDuringTest changed(mask);
    return createPrivateDirectory(directory);
}

TEST(Files, existAsFilesDirectoriesAndOtherThings) {
    const ScratchDirectory scratch;
    EXPECT_TRUE(fileExists(scratch.makeFile("file").string()));
    EXPECT_TRUE(fileExists(scratch.path().string()));
    EXPECT_TRUE(fileExists("/dev/null"));
    EXPECT_TRUE(fileExists("/"));
}

TEST(Files, doNotExistUnderOtherNames) {
    const ScratchDirectory scratch;
    const std::string file = scratch.makeFile("file").string();
    EXPECT_FALSE(fileExists(file + "2"));
    EXPECT_FALSE(fileExists(file + "/below"));
    EXPECT_FALSE(fileExists(""));
}

TEST(Files, doNotExistUnderANameWithAZeroByte) {
    const ScratchDirectory scratch;
    const std::string file = scratch.makeFile("file").string();
    EXPECT_FALSE(fileExists(file + '\0'));
    EXPECT_FALSE(fileExists(file + '\0' + "tail"));
    EXPECT_FALSE(isDirectory(scratch.path().string() + '\0'));
}

TEST(Files, existBehindALinkOnlyIfItsTargetDoes) {
    const ScratchDirectory scratch;
    fs::create_symlink(scratch.makeFile("file"), scratch / "link");
    fs::create_symlink(scratch / "missing", scratch / "dangling");
    EXPECT_TRUE(fileExists((scratch / "link").string()));
    EXPECT_FALSE(fileExists((scratch / "dangling").string()));
}

TEST(Files, areDirectoriesThroughLinksToo) {
    const ScratchDirectory scratch;
    fs::create_directory_symlink(scratch.path(), scratch / "link");
    EXPECT_TRUE(isDirectory(scratch.path().string()));
    EXPECT_TRUE(isDirectory((scratch / "link").string()));
    EXPECT_FALSE(isDirectory(scratch.makeFile("file").string()));
    EXPECT_FALSE(isDirectory((scratch / "missing").string()));
}

TEST(CreatePrivateDirectory, givesTheOwnerAloneAllRightsUnderAnyUmask) {
    const ScratchDirectory scratch;
    constexpr std::array<mode_t, 9> masks{0000, 0022, 0027, 0077, 0177, 0277, 0500, 0700, 0777};
    for (const mode_t mask : masks) {
        const fs::path directory = scratch / std::to_string(mask);
        EXPECT_TRUE(createUnder(mask, directory)) << std::oct << mask;
        EXPECT_EQ(modeOf(directory), 0700U) << std::oct << mask;
    }
}

TEST(CreatePrivateDirectory, createsWhatIsMissingAboveIt) {
    const ScratchDirectory scratch;
    for (const mode_t mask : {0000U, 0022U, 0777U}) {
        const std::string first = std::to_string(mask);
        EXPECT_TRUE(createUnder(mask, scratch / first / "b/c"));
        EXPECT_EQ(modeOf(scratch / first / "b/c"), 0700U);
        EXPECT_EQ(modeOf(scratch / first / "b"), 0700U);
        EXPECT_EQ(modeOf(scratch / first), 0700U);
    }
}

TEST(CreatePrivateDirectory, givesItsRightsToANameWithATrailingSlashToo) {
    const ScratchDirectory scratch;
    EXPECT_TRUE(createUnder(0022, scratch / "directory/"));
    EXPECT_EQ(modeOf(scratch / "directory"), 0700U);
}

TEST(CreatePrivateDirectory, leavesAnExistingOneAsItIs) {
    const ScratchDirectory scratch;
    const fs::path directory = scratch / "directory";
    fs::create_directory(directory);
    fs::permissions(directory, fs::perms{0755});
    scratch.makeFile("directory/file");
    EXPECT_TRUE(createPrivateDirectory(directory));
    EXPECT_EQ(modeOf(directory), 0755U);
    EXPECT_TRUE(fs::exists(directory / "file"));
}

TEST(CreatePrivateDirectory, takesALinkToADirectoryForOne) {
    const ScratchDirectory scratch;
    fs::create_directory(scratch / "directory");
    fs::create_directory_symlink(scratch / "directory", scratch / "link");
    EXPECT_TRUE(createPrivateDirectory(scratch / "link"));
}

TEST(CreatePrivateDirectory, failsWhereSomethingElseIsInTheWay) {
    const ScratchDirectory scratch;
    const fs::path file = scratch.makeFile("file");
    fs::create_symlink(scratch / "missing", scratch / "dangling");
    EXPECT_FALSE(createPrivateDirectory(file));
    EXPECT_FALSE(createPrivateDirectory(file / "below"));
    EXPECT_FALSE(createPrivateDirectory(file / "far/below"));
    EXPECT_FALSE(createPrivateDirectory(scratch / "dangling"));
    EXPECT_FALSE(createPrivateDirectory(""));
    EXPECT_TRUE(fs::is_regular_file(file));
}

/// The errno with which creating the directory fails; 0 if it succeeds.
int creationFailure(const fs::path& directory) {
    errno = 0;
    return createPrivateDirectory(directory) ? 0 : errno;
}

TEST(CreatePrivateDirectory, tellsWhatIsInTheWay) {
    const ScratchDirectory scratch;
    const fs::path file = scratch.makeFile("file");
    fs::create_symlink(scratch / "missing", scratch / "dangling");
    fs::create_symlink(scratch / "loop", scratch / "loop");
    EXPECT_EQ(creationFailure(file), EEXIST);
    EXPECT_EQ(creationFailure(scratch / "dangling"), EEXIST);
    EXPECT_EQ(creationFailure(scratch / "loop"), EEXIST);
    EXPECT_EQ(creationFailure(file / "below"), ENOTDIR);
    EXPECT_EQ(creationFailure(file / "far/below"), ENOTDIR);
    EXPECT_EQ(creationFailure(scratch / "loop/below"), ELOOP);
}

TEST(CreatePrivateDirectory, tellsThatANameIsNone) {
    const ScratchDirectory scratch;
    const std::string longName(256, 'n');
    EXPECT_EQ(creationFailure(""), ENOENT);
    EXPECT_EQ(creationFailure(scratch / longName), ENAMETOOLONG);
    EXPECT_EQ(creationFailure(scratch / longName / "below"), ENAMETOOLONG);
    EXPECT_EQ(creationFailure(scratch / longName.substr(1)), 0);
}

TEST(CreatePrivateDirectory, tellsThatItIsNotPermitted) {
    const ScratchDirectory scratch;
    fs::create_directory(scratch / "closed");
    fs::permissions(scratch / "closed", fs::perms{0500});
    const auto failsWithoutRights = [](const fs::path& directory) {
        return exitStatusOf([&] {
            dropRootRights();
            return creationFailure(directory) == EACCES ? 0 : 1;
        });
    };
    EXPECT_EQ(failsWithoutRights(scratch / "closed/directory"), 0);
    EXPECT_EQ(failsWithoutRights(scratch / "closed/far/below"), 0);
}

} // namespace
} // namespace tavel
