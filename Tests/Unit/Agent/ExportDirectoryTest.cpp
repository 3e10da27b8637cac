#include "TavelClipboardAgent/main/ExportDirectory.h"

#include "Support/FileError.h"
#include "TavelClipboardAgent/main/ExportNames.h"
#include "TavelClipboardAgent/main/LeftOvers.h"
#include "Tests/Support/Permissions.h"
#include "Tests/Unit/Fixtures/ScratchDirectory.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace tavel {
namespace {

TEST(ExportDirectory, isTheOwnersAlone) {
    const ScratchDirectory scratch;
    ExportDirectory directory(scratch / "a/b");
    directory.create();
    EXPECT_EQ(modeOf(directory.path()), 0700U);
}

TEST(ExportDirectory, isMadeAgainForItsOwnerAloneWhenItVanished) {
    const ScratchDirectory scratch;
    ExportDirectory directory(scratch / "above" / "a");
    directory.create();
    const UmaskDuringTest changed(0);
    std::filesystem::remove_all(scratch / "above");
    EXPECT_THROW(static_cast<void>(directory.directory(ExportDirectory::Missing::fail)), FileError);
    EXPECT_FALSE(std::filesystem::exists(scratch / "above"));
    EXPECT_EQ(directory.directory(ExportDirectory::Missing::make)->path(), scratch / "above" / "a");
    for (const std::filesystem::path& made : {scratch / "above", directory.path()})
        EXPECT_EQ(modeOf(made), 0700U) << made;
}

TEST(ExportDirectory, takesAnotherNameWhereALinkIs) {
    const ScratchDirectory scratch;
    for (const auto missing : {ExportDirectory::Missing::make, ExportDirectory::Missing::fail}) {
        ExportDirectory directory(scratch / "a");
        directory.create();
        std::filesystem::remove(scratch / "a");
        std::filesystem::create_directory(scratch / "elsewhere");
        std::filesystem::create_directory_symlink(scratch / "elsewhere", scratch / "a");
        directory.directory(missing)->writeFile("file", "secret");
        EXPECT_TRUE(std::filesystem::is_empty(scratch / "elsewhere"));
        EXPECT_NE(directory.path(), scratch / "a");
        EXPECT_TRUE(exportNames::isDirectory(directory.path().filename().string()));
        EXPECT_TRUE(std::filesystem::exists(directory.path() / "file"));
        directory.remove();
        EXPECT_FALSE(std::filesystem::exists(directory.path()));
        EXPECT_TRUE(std::filesystem::is_symlink(scratch / "a"));
        std::filesystem::remove(scratch / "a");
        std::filesystem::remove(scratch / "elsewhere");
    }
}

TEST(ExportDirectory, takesAnotherNameWhereAnotherUsersDirectoryIs) {
    if (geteuid() != 0)
        GTEST_SKIP() << "Only root can make a second user's directory: THIS TEST DID NOT RUN";
    const ScratchDirectory scratch;
    ExportDirectory directory(scratch / "a");
    directory.create();
    std::filesystem::remove(scratch / "a");
    std::filesystem::create_directory(scratch / "a");
    ASSERT_EQ(chown((scratch / "a").c_str(), 65534, 65534), 0);
    directory.directory(ExportDirectory::Missing::fail)->writeFile("file", "secret");
    EXPECT_TRUE(std::filesystem::is_empty(scratch / "a"));
    EXPECT_TRUE(std::filesystem::exists(directory.path() / "file"));
    EXPECT_EQ(modeOf(directory.path()), 0700U);
}

TEST(ExportDirectory, takesAnotherNameWhereSomebodyHoldsTheLock) {
    const ScratchDirectory scratch;
    const PrivateDirectory found = PrivateDirectory::make(scratch / "a");
    ASSERT_TRUE(found.tryLock()); // as an agent that removes left-overs does
    ExportDirectory directory(scratch / "a");
    directory.create();
    EXPECT_NE(directory.path(), scratch / "a");
    EXPECT_TRUE(std::filesystem::exists(directory.path()));
}

TEST(ExportDirectory, survivesAgentsThatRemoveLeftOversWhileItIsMade) {
    const ScratchDirectory scratch;
    std::atomic<bool> stop = false;
    std::thread cleaner([&] {
        while (!stop)
            removeLeftOvers(scratch.path());
    });
    for (int round = 0; round < 300; ++round) {
        ExportDirectory directory(scratch / exportNames::newDirectory());
        directory.create();
        EXPECT_TRUE(std::filesystem::exists(directory.path())) << round;
        EXPECT_TRUE(directory.directory(ExportDirectory::Missing::fail)->isInPlace());
        directory.remove();
    }
    stop = true;
    cleaner.join();
}

TEST(ExportDirectory, letsNothingInOnceItIsRemoved) {
    const ScratchDirectory scratch;
    ExportDirectory directory(scratch / "a");
    directory.create();
    EXPECT_TRUE(directory.whileThere([&] { std::ofstream(directory.path() / "file") << "a"; }));
    directory.remove();
    EXPECT_FALSE(std::filesystem::exists(directory.path()));
    bool ran = false;
    EXPECT_FALSE(directory.whileThere([&] { ran = true; }));
    EXPECT_FALSE(ran);
}

TEST(ExportDirectory, goesOnAfterAWriteThatFailed) {
    const ScratchDirectory scratch;
    ExportDirectory directory(scratch / "a");
    EXPECT_THROW(directory.whileThere([] { throw std::runtime_error("full"); }), std::runtime_error);
    EXPECT_TRUE(directory.whileThere([] {}));
}

TEST(ExportDirectory, waitsForARunningWriteBeforeItIsRemoved) {
    const ScratchDirectory scratch;
    ExportDirectory directory(scratch / "a");
    directory.create();
    std::atomic<bool> writing = false;
    std::thread writer([&] {
        static_cast<void>(directory.whileThere([&] {
            writing = true;
            writing.notify_one();
            for (int i = 0; i < 200; ++i) // creates and fills it while the other thread waits to remove it
                std::ofstream(directory.path() / std::to_string(i)) << "a";
        }));
    });
    writing.wait(false);
    directory.remove();
    EXPECT_FALSE(std::filesystem::exists(directory.path()));
    writer.join();
    EXPECT_FALSE(std::filesystem::exists(directory.path()));
}

} // namespace
} // namespace tavel
