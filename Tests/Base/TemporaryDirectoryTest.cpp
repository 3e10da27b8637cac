#include "Linux/Base/System.h"
#include "Tests/Store/EnvironmentVariable.h"
#include "Tests/Unit/Fixtures/ForkedFunction.h"
#include "Tests/Unit/Fixtures/ScratchDirectory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

namespace tavel {
namespace {

namespace fs = std::filesystem;

class TemporaryDirectory : public testing::Test {
protected:
    static fs::path with(const std::optional<std::string>& value) {
        const EnvironmentVariable variable("TMPDIR", value);
        return userTemporaryDirectory();
    }

    const ScratchDirectory scratch;
};

TEST_F(TemporaryDirectory, isTheOneThatTheEnvironmentNames) {
    EXPECT_EQ(with(scratch.path()), scratch.path());
    fs::create_directory(scratch / "\u00E9t\u00E9");
    EXPECT_EQ(with(scratch / "\u00E9t\u00E9"), scratch / "\u00E9t\u00E9");
    fs::create_directory_symlink(scratch.path(), scratch / "link");
    EXPECT_EQ(with(scratch / "link"), scratch / "link");
}

TEST_F(TemporaryDirectory, isSlashTmpWithoutAnAbsolutePath) {
    EXPECT_EQ(with(std::nullopt), "/tmp");
    EXPECT_EQ(with(""), "/tmp");
    EXPECT_EQ(with("."), "/tmp");
}

TEST_F(TemporaryDirectory, isSlashTmpWhereThereIsNoDirectory) {
    EXPECT_EQ(with(scratch / "missing"), "/tmp");
    EXPECT_EQ(with(scratch.makeFile("file")), "/tmp");
    EXPECT_EQ(with(scratch / "file/below"), "/tmp");
}

TEST_F(TemporaryDirectory, isSlashTmpWhereItsPathCannotBeAnnounced) {
    const fs::path latin1 = scratch / "\xE9t\xE9";
    fs::create_directory(latin1);
    EXPECT_EQ(with(latin1), "/tmp");
}

TEST_F(TemporaryDirectory, isSlashTmpWhereNoFileCanBeMade) {
    fs::permissions(scratch.path(), fs::perms{0755}); // lets the process below reach what is in it
    for (const unsigned mode : {0777U, 0333U, 0555U, 0666U, 0000U}) {
        const fs::path directory = scratch / std::to_string(mode);
        fs::create_directory(directory);
        fs::permissions(directory, fs::perms{mode});
        const bool usable = (mode & 0333U) == 0333U;
        EXPECT_EQ(exitStatusOf([&] {
                      dropRootRights();
                      return with(directory) == (usable ? directory : fs::path("/tmp")) ? 0 : 1;
                  }),
                  0)
            << std::oct << mode;
    }
}

} // namespace
} // namespace tavel
