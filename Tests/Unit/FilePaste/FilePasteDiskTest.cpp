#include "Tests/Unit/FilePaste/FilePasteFixture.h"
#include "Tests/Unit/Fixtures/ForkedFunction.h"
#include "Tests/Unit/Fixtures/OwnMounts.h"
#include "Tests/Unit/Support/WritingPrivateFile.h"

#include <gtest/gtest.h>
#include <sys/mount.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

namespace tavel {
namespace {

// Disks on which the generated file cannot be written. A child process mounts the file system, which only it
// sees. Its exit status is 0, or the number of the step that failed.

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class FilePasteDisk : public FilePasteFixture {
protected:
    FilePasteDisk() { fs::create_directory(root); }

    std::string errorOfPublishing(std::size_t size, const std::string& name = "a.txt") {
        return errorOf([&] {
            paste->publishGeneratedFile(pasteboard().changeCount(), Bytes::adopt(std::string(size, 'x')),
                                        name);
        });
    }

    void mountSmallFileSystem(unsigned long flags = 0) const {
        enterOwnFileSystemView();
        if (mount("tmpfs", root.c_str(), "tmpfs", flags, "mode=0700,size=1m") != 0)
            throw std::system_error(errno, std::generic_category(), "A file system cannot be mounted here");
    }

    bool nothingIsLeft() const {
        return countEntries(root) == 0 && changes.empty() && !platform.pasteboard->content("public.file-url");
    }
};

TEST_F(FilePasteDisk, thatIsFullKeepsNoPartialFile) {
    EXPECT_EQ(exitStatusOf([this] {
                  mountSmallFileSystem();
                  if (errorOfPublishing(2 << 20) != "NSCocoaErrorDomain 640")
                      return 1;
                  if (!nothingIsLeft())
                      return 2;
                  // Fits only if the failed file left nothing behind.
                  return errorOfPublishing(900'000).empty() && files().size() == 1 ? 0 : 3;
              }),
              0);
}

TEST_F(FilePasteDisk, thatIsFullIsLoggedAndTheNextShortcutIsTaken) {
    EXPECT_EQ(exitStatusOf([this] {
                  mountSmallFileSystem();
                  switchOn();
                  copy("public.utf8-plain-text", std::string(2 << 20, 'x'));
                  pasteAs("a");
                  if (!loggedFailure("NSCocoaErrorDomain:640") || !nothingIsLeft())
                      return 1;
                  copy("public.utf8-plain-text", "short");
                  pasteAs("a");
                  return files().size() == 1 && platform.tap.posted.size() == 4 ? 0 : 2;
              }),
              0);
}

TEST_F(FilePasteDisk, thatIsReadOnlyIsReported) {
    EXPECT_EQ(exitStatusOf([this] {
                  mountSmallFileSystem(MS_RDONLY);
                  return errorOfPublishing(1) == "NSCocoaErrorDomain 642" && nothingIsLeft() ? 0 : 1;
              }),
              0);
}

TEST_F(FilePasteDisk, thatMayNotBeWrittenToIsReported) {
    fs::permissions(platform.scratch.path(), fs::perms{0755}); // lets the process reach the directory below
    fs::permissions(root, fs::perms{0555});
    EXPECT_EQ(exitStatusOf([this] {
                  dropRootRights();
                  return errorOfPublishing(1) == "NSCocoaErrorDomain 513" ? 0 : 1;
              }),
              0);
    fs::permissions(root, fs::perms{0700});
    EXPECT_TRUE(nothingIsLeft());
}

TEST_F(FilePasteDisk, thatHasAFileInPlaceOfTheRootIsReported) {
    fs::remove(root);
    std::ofstream(root) << "a file";
    EXPECT_EQ(errorOfPublishing(1), "NSCocoaErrorDomain 512");
    EXPECT_EQ(readBack(root), "a file");
}

TEST_F(FilePasteDisk, takesNoNameOfMoreThan255Bytes) {
    std::string stem;
    for (int i = 0; i < 83; ++i)
        stem += "語"; // three bytes
    EXPECT_EQ(errorOfPublishing(1, stem + "éa.txt"), "NSCocoaErrorDomain 514") << "256 bytes";
    EXPECT_TRUE(nothingIsLeft());
    EXPECT_EQ(errorOfPublishing(1, stem + "é.txt"), "") << "255 bytes";
    EXPECT_EQ(files().size(), 1U);
}

TEST_F(FilePasteDisk, isLoggedWithoutTheNameOfTheFile) {
    std::string tooLong;
    for (int i = 0; i < 100; ++i)
        tooLong += "語";
    switchOn();
    paste->complete(fileManager, pasteboard().changeCount(), Bytes::copyOf("content"), tooLong + ".txt");
    EXPECT_EQ(platform.logged,
              std::vector{"Tavel : préparation du fichier impossible (NSCocoaErrorDomain:514, " +
                          std::generic_category().message(ENAMETOOLONG) + ")"});
}

TEST_F(FilePasteDisk, refusesTheLongestNameOfLettersThatTakeThreeBytes) {
    std::string stem;
    for (int i = 0; i < 176; ++i)
        stem += "語";
    EXPECT_EQ(errorOfPublishing(1, stem + ".txt"), "NSCocoaErrorDomain 514");
    EXPECT_TRUE(nothingIsLeft());
}

} // namespace
} // namespace tavel
