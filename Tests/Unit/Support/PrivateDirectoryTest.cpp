#include "Support/PrivateDirectory.h"

#include "Support/FileError.h"
#include "Tests/Support/Permissions.h"
#include "Tests/Unit/Fixtures/ForkedFunction.h"
#include "Tests/Unit/Fixtures/ScratchDirectory.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>

namespace tavel {
namespace {

namespace fs = std::filesystem;

int failureOf(const std::function<void()>& action) {
    try {
        action();
        return 0;
    } catch (const FileError& error) {
        return error.code();
    }
}

int failureOfOpening(const fs::path& path) {
    return failureOf([&] { static_cast<void>(PrivateDirectory::open(path)); });
}

TEST(PrivateDirectory, isMadeForItsOwnerAloneWithWhatIsAboveIt) {
    const ScratchDirectory scratch;
    for (const mode_t mask : {0000U, 0022U, 0777U}) {
        const fs::path above = scratch / std::to_string(mask);
        const UmaskDuringTest changed(mask);
        const PrivateDirectory made = PrivateDirectory::make(above / "directory");
        const PrivateDirectory inner = made.makeDirectory("inner");
        EXPECT_EQ(modeOf(above), 0700U);
        EXPECT_EQ(modeOf(made.path()), 0700U);
        EXPECT_EQ(modeOf(inner.path()), 0700U);
        EXPECT_EQ(inner.path(), above / "directory/inner");
    }
}

TEST(PrivateDirectory, isTakenFromOthersWhenItExists) {
    const ScratchDirectory scratch;
    fs::create_directory(scratch / "directory");
    for (const unsigned mode : {0777U, 0755U, 0701U, 0710U, 0500U}) {
        fs::permissions(scratch / "directory", fs::perms{mode});
        static_cast<void>(PrivateDirectory::make(scratch / "directory"));
        EXPECT_EQ(modeOf(scratch / "directory"), mode & 0700U);
    }
}

TEST(PrivateDirectory, isNothingElse) {
    const ScratchDirectory scratch;
    const fs::path file = scratch.makeFile("file");
    fs::create_directory(scratch / "directory");
    fs::create_directory_symlink(scratch / "directory", scratch / "link");
    fs::create_symlink(scratch / "missing", scratch / "dangling");
    for (const char* const name : {"file", "link", "dangling"}) {
        EXPECT_EQ(failureOfOpening(scratch / name), ENOTDIR) << name;
        EXPECT_EQ(failureOf([&] { static_cast<void>(PrivateDirectory::make(scratch / name)); }), ENOTDIR)
            << name;
    }
    EXPECT_EQ(failureOfOpening(scratch / "missing"), ENOENT);
    EXPECT_FALSE(fs::exists(scratch / "missing"));
}

TEST(PrivateDirectory, isNotAnotherUsers) {
    const ScratchDirectory scratch;
    fs::path anothers = "/";
    if (geteuid() == 0) {
        anothers = scratch / "anothers";
        fs::create_directory(anothers);
        ASSERT_EQ(chown(anothers.c_str(), 65534, 65534), 0);
    }
    const unsigned mode = modeOf(anothers);
    EXPECT_EQ(failureOfOpening(anothers), EPERM);
    EXPECT_EQ(modeOf(anothers), mode);
}

TEST(PrivateDirectory, keepsOthersFromWhatIsInIt) {
    if (geteuid() != 0)
        GTEST_SKIP() << "Only root can become a second user: THIS TEST DID NOT RUN";
    const ScratchDirectory scratch;
    fs::permissions(scratch.path(), fs::perms{0777});
    const PrivateDirectory directory = PrivateDirectory::make(scratch / "directory");
    directory.writeFile("file", "secret");
    EXPECT_EQ(exitStatusOf([&] {
                  dropRootRights();
                  const std::string file = directory.path() / "file";
                  int gained = access(file.c_str(), F_OK) == 0 || errno != EACCES ? 1 : 0;
                  gained += open(file.c_str(), O_RDONLY) < 0 ? 0 : 2;
                  gained += open(directory.path().c_str(), O_RDONLY) < 0 ? 0 : 4;
                  gained += unlink(file.c_str()) != 0 ? 0 : 8;
                  gained += mkdir((directory.path() / "more").c_str(), 0700) != 0 ? 0 : 16;
                  return gained;
              }),
              0);
}

TEST(PrivateDirectory, isInPlaceUntilItsPathLeadsElsewhere) {
    const ScratchDirectory scratch;
    const fs::path path = scratch / "directory";
    const PrivateDirectory directory = PrivateDirectory::make(path);
    EXPECT_TRUE(directory.isInPlace());
    fs::rename(path, scratch / "moved");
    EXPECT_FALSE(directory.isInPlace());
    fs::create_directory_symlink(scratch / "moved", path);
    EXPECT_FALSE(directory.isInPlace()) << "through a link";
    fs::remove(path);
    fs::create_directory(path);
    EXPECT_FALSE(directory.isInPlace());
    fs::remove(path);
    fs::rename(scratch / "moved", path);
    EXPECT_TRUE(directory.isInPlace());
}

TEST(PrivateDirectory, getsItsFilesWhereverItIs) {
    const ScratchDirectory scratch;
    const fs::path path = scratch / "directory";
    const PrivateDirectory directory = PrivateDirectory::make(path);
    fs::rename(path, scratch / "moved");
    fs::create_directory(scratch / "elsewhere");
    fs::create_directory_symlink(scratch / "elsewhere", path);
    directory.writeFile("direct", "a");
    directory.writeFileAtomically("atomic", "b");
    static_cast<void>(directory.makeDirectory("inner"));
    EXPECT_TRUE(fs::is_empty(scratch / "elsewhere"));
    for (const char* const name : {"direct", "atomic", "inner"})
        EXPECT_TRUE(fs::exists(scratch / "moved" / name)) << name;
    EXPECT_TRUE(directory.removeEntry("direct"));
    EXPECT_FALSE(fs::exists(scratch / "moved/direct"));
}

TEST(PrivateDirectory, isLockedByOneAtATimeUntilItsHolderEndsAnyhow) {
    const ScratchDirectory scratch;
    const fs::path path = scratch / "directory";
    const PrivateDirectory ours = PrivateDirectory::make(path);
    EXPECT_EQ(exitStatusOf([&] {
                  const PrivateDirectory theirs = PrivateDirectory::open(path);
                  return theirs.tryLock() && !ours.tryLock() ? 0 : 1;
              }),
              0);
    EXPECT_EQ(exitStatusOf([&] {
                  const PrivateDirectory theirs = PrivateDirectory::open(path);
                  static_cast<void>(theirs.tryLock());
                  return kill(getpid(), SIGKILL);
              }),
              std::nullopt);
    EXPECT_TRUE(ours.tryLock());
}

TEST(PrivateDirectory, goesWithEverythingInItButNotWhatLinksLeadTo) {
    const ScratchDirectory scratch;
    const fs::path kept = scratch.makeFile("kept");
    PrivateDirectory directory = PrivateDirectory::make(scratch / "directory");
    fs::create_directories(directory.path() / "a/b");
    scratch.makeFile("directory/a/b/file");
    fs::create_symlink(kept, directory.path() / "a/link");
    fs::create_directory_symlink(scratch.path(), directory.path() / "directory-link");
    EXPECT_TRUE(directory.remove());
    EXPECT_FALSE(fs::exists(directory.path()));
    EXPECT_TRUE(fs::exists(kept));
}

TEST(PrivateDirectory, hasNothingToRemoveWhereNothingIs) {
    const ScratchDirectory scratch;
    EXPECT_TRUE(PrivateDirectory::make(scratch / "directory").removeEntry("missing"));
}

TEST(PrivateDirectory, isEmptiedAndItsSuccessorLeftWhenItWasReplaced) {
    const ScratchDirectory scratch;
    PrivateDirectory directory = PrivateDirectory::make(scratch / "directory");
    directory.writeFile("file", "secret");
    fs::rename(directory.path(), scratch / "moved");
    fs::create_directory(directory.path());
    EXPECT_TRUE(directory.remove());
    EXPECT_TRUE(fs::is_empty(scratch / "moved"));
    EXPECT_TRUE(fs::exists(directory.path()));
}

TEST(PrivateDirectory, isLeftWithWhatIsTooDeepInIt) {
    const ScratchDirectory scratch;
    PrivateDirectory directory = PrivateDirectory::make(scratch / "directory");
    fs::path deep = directory.path();
    for (int level = 0; level < 33; ++level)
        deep /= "d";
    fs::create_directories(deep);
    EXPECT_TRUE(directory.remove()) << "32 directories below an entry";
    static_cast<void>(PrivateDirectory::make(directory.path()));
    fs::create_directories(deep / "d");
    EXPECT_FALSE(PrivateDirectory::open(directory.path()).remove());
    EXPECT_TRUE(fs::exists(deep / "d"));
}

TEST(PrivateDirectory, movesWithItsDescriptor) {
    const ScratchDirectory scratch;
    PrivateDirectory first = PrivateDirectory::make(scratch / "first");
    PrivateDirectory second = PrivateDirectory::make(scratch / "second");
    second = std::move(first);
    second.writeFile("file", "a");
    EXPECT_TRUE(fs::exists(scratch / "first/file"));
    EXPECT_EQ(second.path(), scratch / "first");
}

TEST(PrivateDirectory, knowsItsUnfinishedFilesByName) {
    const std::string uuid = "0123ABCD-4567-4EF0-89AB-CDEF01234567";
    EXPECT_TRUE(isPartialFileName("." + uuid + ".partial"));
    EXPECT_FALSE(isPartialFileName(uuid + ".partial"));
    EXPECT_FALSE(isPartialFileName("." + uuid));
    EXPECT_FALSE(isPartialFileName(".partial"));
    EXPECT_FALSE(isPartialFileName(""));
}

} // namespace
} // namespace tavel
