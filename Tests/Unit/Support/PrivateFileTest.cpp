#include "Tests/Support/Permissions.h"
#include "Tests/Unit/Fixtures/ForkedFunction.h"
#include "Tests/Unit/Fixtures/Random.h"
#include "Tests/Unit/Fixtures/ScratchDirectory.h"
#include "Tests/Unit/Support/WritingPrivateFile.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <string>

namespace tavel {
namespace {

namespace fs = std::filesystem;

void writeUnder(mode_t mask, const Writer& writer, const fs::path& path) {
    const UmaskDuringTest changed(mask);
    writer.write(path, "new");
}

/// Writes a mebibyte under a file size limit of 4 KiB. 0 if that fails with EFBIG.
int writeBeyondTheLimit(const Writer& writer, const fs::path& path) {
    std::signal(SIGXFSZ, SIG_IGN);
    constexpr rlimit limit{4096, 4096};
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
        return 1;
    return writingCode(writer, path, std::string(1 << 20, 'x')) == EFBIG ? 0 : 2;
}

TEST(PrivateFile, holdsWhatWasWritten) {
    const ScratchDirectory scratch;
    Random random(1);
    for (const Writer& writer : writers) {
        for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{5'000'000}}) {
            const std::string content = random.bytes(size);
            const fs::path file = scratch / (std::string(writer.name) + std::to_string(size));
            writer.write(file, content);
            EXPECT_TRUE(readBack(file) == content) << writer.name << ", " << size << " bytes";
        }
    }
    EXPECT_EQ(countEntries(scratch.path()), 6);
}

TEST(PrivateFile, isItsOwnersAloneUnderAnyUmask) {
    const ScratchDirectory scratch;
    for (const Writer& writer : writers) {
        for (const mode_t mask : {0000U, 0022U, 0077U, 0177U, 0277U, 0400U, 0600U, 0777U}) {
            const fs::path file = scratch / (std::string(writer.name) + std::to_string(mask));
            writeUnder(mask, writer, file);
            EXPECT_EQ(modeOf(file), 0600U) << writer.name << std::oct << mask;
        }
    }
}

TEST(PrivateFile, isANewOneOrTakesAnOldOnesPlace) {
    const ScratchDirectory scratch;
    const fs::path file = scratch.makeFile("file", std::string(100'000, 'x'));
    fs::permissions(file, fs::perms{0644});
    EXPECT_EQ(writingCode(directWriter, file, "new"), EEXIST);
    EXPECT_EQ(fs::file_size(file), 100'000U);

    fs::create_hard_link(file, scratch / "other name");
    EXPECT_EQ(writingCode(atomicWriter, file, "new"), 0);
    EXPECT_EQ(readBack(file), "new");
    EXPECT_EQ(modeOf(file), 0600U);
    EXPECT_EQ(fs::file_size(scratch / "other name"), 100'000U) << "who has it open reads on undisturbed";
    EXPECT_EQ(countEntries(scratch.path()), 2);
}

TEST(PrivateFile, doesNotGoThroughALink) {
    for (const Writer& writer : writers) {
        const ScratchDirectory scratch;
        const fs::path target = scratch.makeFile("target", "target");
        fs::permissions(target, fs::perms{0644});
        fs::create_symlink(target, scratch / "link");
        fs::create_symlink(scratch / "missing", scratch / "dangling");
        const bool isAtomic = writer.function == atomicWriter.function;
        EXPECT_EQ(writingCode(writer, scratch / "link", "new"), isAtomic ? 0 : EEXIST);
        EXPECT_EQ(writingCode(writer, scratch / "dangling", "new"), isAtomic ? 0 : EEXIST);
        EXPECT_EQ(readBack(target), "target") << writer.name;
        EXPECT_EQ(modeOf(target), 0644U) << writer.name;
        EXPECT_EQ(fs::is_symlink(scratch / "link"), !isAtomic) << "the link itself is what gets replaced";
        EXPECT_FALSE(fs::exists(scratch / "missing")) << writer.name;
        EXPECT_EQ(countEntries(scratch.path()), 3) << writer.name;
    }
}

TEST(PrivateFile, staysAsItWasWhenWritingAtomicallyFails) {
    const ScratchDirectory scratch;
    const fs::path file = scratch.makeFile("file", "old");
    fs::permissions(file, fs::perms{0644});
    EXPECT_EQ(exitStatusOf([&] { return writeBeyondTheLimit(atomicWriter, file); }), 0);
    EXPECT_EQ(exitStatusOf([&] { return writeBeyondTheLimit(atomicWriter, scratch / "missing"); }), 0);
    EXPECT_EQ(readBack(file), "old");
    EXPECT_EQ(modeOf(file), 0644U);
    EXPECT_EQ(countEntries(scratch.path()), 1);
}

TEST(PrivateFile, tellsThatWritingDirectlyFailed) {
    const ScratchDirectory scratch;
    EXPECT_EQ(exitStatusOf([&] { return writeBeyondTheLimit(directWriter, scratch / "file"); }), 0);
    EXPECT_LE(fs::file_size(scratch / "file"), 4096U);
    EXPECT_EQ(modeOf(scratch / "file"), 0600U);
}

TEST(PrivateFile, tellsWhyItCannotBeMade) {
    for (const Writer& writer : writers) {
        const ScratchDirectory scratch;
        const fs::path file = scratch.makeFile("file");
        EXPECT_EQ(writingCode(writer, scratch / std::string(256, 'n'), "new"), ENAMETOOLONG) << writer.name;
        EXPECT_EQ(readBack(file), "content") << writer.name;
        EXPECT_EQ(countEntries(scratch.path()), 1) << writer.name;
    }
}

TEST(PrivateFile, doesNotTakeADirectorysPlace) {
    for (const Writer& writer : writers) {
        const ScratchDirectory scratch;
        fs::create_directory(scratch / "directory");
        const int code = writingCode(writer, scratch / "directory", "new");
        EXPECT_EQ(code, writer.function == atomicWriter.function ? EISDIR : EEXIST) << writer.name;
        EXPECT_TRUE(fs::is_directory(scratch / "directory")) << writer.name;
        EXPECT_EQ(countEntries(scratch / "directory"), 0) << writer.name;
        EXPECT_EQ(countEntries(scratch.path()), 1) << writer.name;
    }
}

TEST(PrivateFile, tellsThatItMayNotBeMade) {
    for (const Writer& writer : writers) {
        const ScratchDirectory scratch;
        EXPECT_EQ(exitStatusOf([&] {
                      giveToNobodyAndBecomeNobody(scratch.path());
                      fs::permissions(scratch.path(), fs::perms{0500});
                      const int code = writingCode(writer, scratch / "file", "new");
                      fs::permissions(scratch.path(), fs::perms{0700});
                      return code == EACCES && countEntries(scratch.path()) == 0 ? 0 : 1;
                  }),
                  0)
            << writer.name;
    }
}

TEST(PrivateFile, isNamedByItsErrors) {
    const ScratchDirectory scratch;
    const fs::path file = scratch / std::string(256, 'n');
    for (const Writer& writer : writers) {
        try {
            writer.write(file, "new");
            FAIL() << "Writing has to fail";
        } catch (const FileError& error) {
            EXPECT_EQ(error.domain(), "POSIX") << writer.name;
            EXPECT_EQ(error.operation(), FileError::Operation::write) << writer.name;
            EXPECT_EQ(error.path(), file.string()) << writer.name;
            EXPECT_EQ(error.description(), file.string() + ": " + std::strerror(ENAMETOOLONG)) << writer.name;
        }
    }
}

} // namespace
} // namespace tavel
