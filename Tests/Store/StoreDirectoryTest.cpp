#include "Linux/Store/StoreDirectory.h"

#include "Linux/HeadlessPlatform.h"
#include "Linux/Store/PasteboardStore.h"
#include "Linux/Store/StorePasteboard.h"
#include "Support/Error.h"
#include "Support/ScopeExit.h"
#include "Tests/Store/EnvironmentVariable.h"
#include "Tests/Support/Permissions.h"
#include "Tests/Support/ReadingLimits.h"
#include "Tests/Support/TestDirectory.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavel {

namespace {

using testing::AllOf;
using testing::HasSubstr;

class StoreDirectory : public testing::Test {
protected:
    const TestDirectory scratch_;
    const std::filesystem::path store_ = scratch_.path() / "store";

    void makeStoreDirectory(mode_t mode) const {
        ASSERT_EQ(mkdir(store_.c_str(), 0700), 0);
        ASSERT_EQ(chmod(store_.c_str(), mode), 0);
    }

    /// Checks that the directory is refused, with an error that names it and says why.
    static void expectRefused(const std::filesystem::path& directory, const std::string& reason) {
        try {
            preparePasteboardStoreDirectory(directory);
            ADD_FAILURE() << directory << " was accepted";
        } catch (const Error& error) {
            EXPECT_EQ(error.domain(), "Pasteboard");
            EXPECT_THAT(error.description(), AllOf(HasSubstr(directory.string()), HasSubstr(reason)));
        }
    }
};

} // namespace

TEST_F(StoreDirectory, isCreatedForItsOwnerOnlyWhateverTheUmask) {
    for (const mode_t mask : {mode_t{0}, mode_t{022}, mode_t{077}}) {
        const UmaskDuringTest changed(mask);
        preparePasteboardStoreDirectory(store_);
        EXPECT_EQ(modeOf(store_), 0700U);
        std::filesystem::remove(store_);
    }
}

TEST_F(StoreDirectory, ofThisUserAloneIsTakenAsItIs) {
    preparePasteboardStoreDirectory(store_);
    const auto file = scratch_.createFile("store/file", "content");
    preparePasteboardStoreDirectory(store_);
    EXPECT_TRUE(std::filesystem::exists(file));
    EXPECT_EQ(modeOf(store_), 0700U);
}

TEST_F(StoreDirectory, openToOtherUsersIsRefusedAndLeftAsItIs) {
    for (const mode_t mode : {0755U, 0770U, 0701U, 0710U, 0704U, 01777U}) {
        makeStoreDirectory(mode);
        expectRefused(store_, "is open to other users");
        EXPECT_EQ(modeOf(store_), mode);
        std::filesystem::remove(store_);
    }
}

TEST_F(StoreDirectory, thatIsARegularFileIsRefused) {
    scratch_.createFile("store", "content");
    chmod(store_.c_str(), 0600);
    expectRefused(store_, "is not a directory");
}

TEST_F(StoreDirectory, thatIsALinkIsRefusedWhereverItLeads) {
    std::filesystem::create_directory_symlink(scratch_.runtimeDirectory(), store_);
    ASSERT_EQ(modeOf(scratch_.runtimeDirectory()), 0700U);
    expectRefused(store_, "is not a directory");
    std::filesystem::remove(store_);
    std::filesystem::create_directory_symlink(scratch_.path() / "nowhere", store_);
    expectRefused(store_, "is not a directory");
}

TEST_F(StoreDirectory, ofAnotherUserIsRefused) {
    if (geteuid() == 0) {
        makeStoreDirectory(0700);
        ASSERT_EQ(chown(store_.c_str(), 65534, 65534), 0);
        expectRefused(store_, "belongs to another user");
    } else {
        expectRefused("/", "belongs to another user");
    }
}

TEST_F(StoreDirectory, withoutAParentIsRefused) {
    expectRefused(scratch_.path() / "missing" / "store", "cannot be created");
    EXPECT_FALSE(std::filesystem::exists(scratch_.path() / "missing"));
}

TEST_F(StoreDirectory, liesInTheRuntimeDirectoryOfThisUser) {
    const EnvironmentVariable runtime("XDG_RUNTIME_DIR", scratch_.runtimeDirectory());
    const EnvironmentVariable temporary("TMPDIR", scratch_.temporaryDirectory());
    EXPECT_EQ(pasteboardStoreDirectory(), scratch_.runtimeDirectory() / "tavel-pasteboard");
}

TEST_F(StoreDirectory, liesInTheTemporaryDirectoryWhenTheRuntimeDirectoryIsNotOneOfThisUser) {
    const EnvironmentVariable temporary("TMPDIR", scratch_.temporaryDirectory());
    const std::filesystem::path expected =
        scratch_.temporaryDirectory() / ("tavel-pasteboard-" + std::to_string(geteuid()));
    const std::filesystem::path file = scratch_.createFile("file");
    std::filesystem::path anothers = "/"; // root's
    if (geteuid() == 0) {
        anothers = scratch_.path() / "anothers";
        std::filesystem::create_directory(anothers);
        ASSERT_EQ(chown(anothers.c_str(), 65534, 65534), 0);
    }
    // "." is a directory of this user's, but not an absolute path to it.
    const std::filesystem::path workingDirectory = std::filesystem::current_path();
    std::filesystem::current_path(scratch_.path());
    const ScopeExit restore([&] { std::filesystem::current_path(workingDirectory); });
    for (const std::string& value :
         {std::string(), std::string("."), std::string("runtime"), (scratch_.path() / "missing").string(),
          file.string(), anothers.string()}) {
        const EnvironmentVariable runtime("XDG_RUNTIME_DIR", value);
        EXPECT_EQ(pasteboardStoreDirectory(), expected) << "XDG_RUNTIME_DIR is \"" << value << '"';
    }
    const EnvironmentVariable runtime("XDG_RUNTIME_DIR", std::nullopt);
    EXPECT_EQ(pasteboardStoreDirectory(), expected);
}

#ifndef __APPLE__ // where the system names the temporary directory, not the environment
TEST_F(StoreDirectory, liesInSlashTmpWhenTheTemporaryDirectoryIsNotAbsolute) {
    const EnvironmentVariable runtime("XDG_RUNTIME_DIR", std::nullopt);
    const std::filesystem::path expected = "/tmp/tavel-pasteboard-" + std::to_string(geteuid());
    for (const std::optional<std::string>& value :
         {std::optional<std::string>(), std::optional<std::string>(""), std::optional<std::string>("tmp")}) {
        const EnvironmentVariable temporary("TMPDIR", value);
        EXPECT_EQ(pasteboardStoreDirectory(), expected);
    }
}
#endif

TEST_F(StoreDirectory, isWhereThePlatformKeepsItsPasteboards) {
    const EnvironmentVariable runtime("XDG_RUNTIME_DIR", scratch_.runtimeDirectory());
    HeadlessPlatform platform;
    EXPECT_FALSE(std::filesystem::exists(scratch_.pasteboardStore())) << "before it is asked for";
    const auto first = platform.openPasteboard("name");
    const auto second = platform.openPasteboard("name");
    const PasteboardItem item{{"net.example.some", Bytes::copyOf("text")}};
    ASSERT_TRUE(first->replaceWithItems({&item, 1}));
    EXPECT_TRUE(second->data("net.example.some", ample));
    EXPECT_EQ(modeOf(scratch_.pasteboardStore()), 0700U);
    EXPECT_TRUE(platform.openPasteboard(std::nullopt)->types().empty());
}

TEST_F(StoreDirectory, thatIsRefusedMakesThePlatformThrowUntilItIsMended) {
    const EnvironmentVariable runtime("XDG_RUNTIME_DIR", scratch_.runtimeDirectory());
    std::filesystem::create_directory(scratch_.pasteboardStore());
    ASSERT_EQ(chmod(scratch_.pasteboardStore().c_str(), 0755), 0);
    HeadlessPlatform platform;
    EXPECT_THROW(platform.openPasteboard(std::nullopt), Error);
    EXPECT_TRUE(std::filesystem::is_empty(scratch_.pasteboardStore()));
    ASSERT_EQ(chmod(scratch_.pasteboardStore().c_str(), 0700), 0);
    EXPECT_TRUE(platform.openPasteboard(std::nullopt));
}

TEST_F(StoreDirectory, holdsFilesForTheirOwnerOnlyWhateverTheUmask) {
    for (const mode_t mask : {mode_t{0}, mode_t{022}}) {
        const UmaskDuringTest changed(mask);
        preparePasteboardStoreDirectory(store_);
        StorePasteboard pasteboard(std::make_shared<const PasteboardStore>(store_), "name");
        const PasteboardItem item{{"net.example.some", Bytes::copyOf("secret")}};
        ASSERT_TRUE(pasteboard.replaceWithItems({&item, 1}));
        ASSERT_FALSE(std::filesystem::is_empty(store_));
        for (const auto& entry : std::filesystem::directory_iterator(store_)) {
            EXPECT_TRUE(entry.is_regular_file()) << entry.path();
            EXPECT_EQ(modeOf(entry.path()), 0600U) << entry.path();
        }
        std::filesystem::remove_all(store_);
    }
}

} // namespace tavel
