#include "TavelClipboardAgent/main/LeftOvers.h"

#include "Support/PrivateDirectory.h"
#include "TavelClipboardAgent/main/ExportDirectory.h"
#include "TavelClipboardAgent/main/ExportNames.h"
#include "Tests/Unit/Fixtures/ForkedFunction.h"
#include "Tests/Unit/Fixtures/ScratchDirectory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <optional>
#include <string>

namespace tavel {
namespace {

namespace fs = std::filesystem;

class LeftOvers : public testing::Test {
protected:
    /// A directory as a killed agent leaves it.
    fs::path makeLeftOver() const {
        const PrivateDirectory directory = PrivateDirectory::make(scratch / exportNames::newDirectory());
        directory.makeDirectory(exportNames::newFormats()).writeFile("text.html", "secret");
        directory.makeDirectory(exportNames::newPaste()).writeFile("a name.txt", "secret");
        directory.writeFile(exportNames::newPicture(), "secret");
        directory.writeFile(".0123ABCD-4567-4EF0-89AB-CDEF01234567.partial", "secret");
        return directory.path();
    }

    void removeThem() const { removeLeftOvers(scratch.path()); }

    const ScratchDirectory scratch;
};

TEST_F(LeftOvers, areRemoved) {
    makeLeftOver();
    makeLeftOver();
    static_cast<void>(PrivateDirectory::make(scratch / exportNames::newDirectory()));
    removeThem();
    EXPECT_TRUE(fs::is_empty(scratch.path()));
}

TEST_F(LeftOvers, areThoseOfAgentsThatWereKilled) {
    EXPECT_EQ(exitStatusOf([&] {
                  ExportDirectory directory(scratch / exportNames::newDirectory());
                  directory.create();
                  removeThem();
                  return fs::exists(directory.path()) ? kill(getpid(), SIGKILL) : 1;
              }),
              std::nullopt);
    EXPECT_FALSE(fs::is_empty(scratch.path()));
    removeThem();
    EXPECT_TRUE(fs::is_empty(scratch.path()));
}

TEST_F(LeftOvers, areNotWhatAnAgentStillUses) {
    ExportDirectory directory(scratch / exportNames::newDirectory());
    directory.create();
    directory.directory(ExportDirectory::Missing::fail)->writeFile(exportNames::newPicture(), "a");
    removeThem();
    EXPECT_TRUE(fs::exists(directory.path()));
    EXPECT_FALSE(fs::is_empty(directory.path()));
}

TEST_F(LeftOvers, areNotWhatSomethingElseMade) {
    const fs::path holdsMore = makeLeftOver();
    scratch.makeFile(holdsMore / "notes.txt");
    const fs::path open = makeLeftOver();
    fs::permissions(open, fs::perms{0755});
    const fs::path otherName = scratch / "tavel-clipboard-backup";
    fs::create_directory(otherName);
    fs::permissions(otherName, fs::perms{0700});
    const fs::path file = scratch.makeFile(exportNames::newDirectory());
    removeThem();
    for (const fs::path& kept : {holdsMore / "notes.txt", open, otherName, file})
        EXPECT_TRUE(fs::exists(kept)) << kept;
}

TEST_F(LeftOvers, areNotWhatALinkLeadsTo) {
    const fs::path directory = makeLeftOver();
    const fs::path elsewhere = scratch / "elsewhere";
    fs::rename(directory, elsewhere);
    fs::create_directory_symlink(elsewhere, directory);
    removeThem();
    EXPECT_TRUE(fs::is_symlink(directory));
    EXPECT_FALSE(fs::is_empty(elsewhere));
}

TEST_F(LeftOvers, ofAnotherUserAreNotTouched) {
    if (geteuid() != 0)
        GTEST_SKIP() << "Only root can make a second user's directory: THIS TEST DID NOT RUN";
    const fs::path anothers = makeLeftOver();
    ASSERT_EQ(chown(anothers.c_str(), 65534, 65534), 0);
    removeThem(); // as root, who could
    EXPECT_FALSE(fs::is_empty(anothers));

    fs::permissions(scratch.path(), fs::perms{0777});
    const fs::path roots = makeLeftOver();
    EXPECT_EQ(exitStatusOf([&] {
                  dropRootRights();
                  const fs::path own = makeLeftOver();
                  removeThem();
                  return fs::exists(own) ? 1 : 0;
              }),
              0);
    EXPECT_FALSE(fs::is_empty(roots));
}

TEST_F(LeftOvers, mayNotExist) {
    removeLeftOvers(scratch / "missing");
    removeLeftOvers(scratch.makeFile("file"));
}

} // namespace
} // namespace tavel
