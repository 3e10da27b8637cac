#include "Tests/Unit/Fixtures/ForkedFunction.h"
#include "Tests/Unit/Fixtures/OwnMounts.h"
#include "Tests/Unit/Fixtures/ScratchDirectory.h"
#include "Tests/Unit/Support/WritingPrivateFile.h"

#include <gtest/gtest.h>
#include <sys/mount.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>

namespace tavel {
namespace {

// Files on a file system of one mebibyte in a child process's own mount namespace. The child's exit status is
// 0, or the number of the step that failed.

namespace fs = std::filesystem;

void mountSmallFileSystem(const fs::path& directory, unsigned long flags = 0) {
    enterOwnFileSystemView();
    if (mount("tmpfs", directory.c_str(), "tmpfs", flags, "mode=0700,size=1m") != 0)
        throw std::system_error(errno, std::generic_category(), "A file system cannot be mounted here");
}

TEST(FullFileSystem, leavesTheOldFileWhenTheNewOneDoesNotFit) {
    const ScratchDirectory scratch;
    EXPECT_EQ(exitStatusOf([&] {
                  mountSmallFileSystem(scratch.path());
                  const fs::path file = scratch.makeFile("file", "old");
                  if (writingCode(atomicWriter, file, std::string(2 << 20, 'x')) != ENOSPC)
                      return 1;
                  if (readBack(file) != "old" || countEntries(scratch.path()) != 1)
                      return 2;
                  const std::string fitting(900'000, 'x'); // fits only if the failed write left nothing
                  if (writingCode(atomicWriter, file, fitting) != 0 || readBack(file) != fitting)
                      return 3;
                  return writingCode(atomicWriter, file, fitting) == ENOSPC && readBack(file) == fitting ? 0
                                                                                                         : 4;
              }),
              0);
}

TEST(FullFileSystem, isToldOfWhenAFileIsWrittenDirectly) {
    const ScratchDirectory scratch;
    EXPECT_EQ(exitStatusOf([&] {
                  mountSmallFileSystem(scratch.path());
                  if (writingCode(directWriter, scratch / "file", std::string(2 << 20, 'x')) != ENOSPC)
                      return 1;
                  fs::remove(scratch / "file");
                  return writingCode(directWriter, scratch / "file", std::string(900'000, 'x'));
              }),
              0);
}

TEST(ReadOnlyFileSystem, isToldOf) {
    const ScratchDirectory scratch;
    EXPECT_EQ(exitStatusOf([&] {
                  mountSmallFileSystem(scratch.path(), MS_RDONLY);
                  for (const Writer& writer : writers) {
                      if (writingCode(writer, scratch / "file", "new") != EROFS)
                          return 1;
                  }
                  return 0;
              }),
              0);
}

} // namespace
} // namespace tavel
