#include "Platform/PasteboardTypes.h"
#include "Support/Error.h"
#include "Tests/Store/StoreProcessTest.h"
#include "Tests/Support/ReadingLimits.h"
#include "Tests/Unit/Fixtures/OwnMounts.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace tavel {

namespace {

/// A store on a file system of a few megabytes.
class FullDisk : public StoreProcessTest {
protected:
    static constexpr std::uint64_t diskBytes = 8 * mebibyte;
    static constexpr std::string_view someType = "net.example.some";

    FullDisk() {
        enterOwnFileSystemView();
        const std::string options = "mode=0700,size=" + std::to_string(diskBytes);
        if (mount("tmpfs", storeDirectory().c_str(), "tmpfs", 0, options.c_str()) != 0)
            throw std::system_error(errno, std::generic_category(),
                                    "This test mounts a small file system, which is not permitted here");
    }

    ~FullDisk() override { umount2(storeDirectory().c_str(), MNT_DETACH); }

    /// Takes all the space but `leftFree` bytes with a file outside the store.
    void fillUp(std::uint64_t leftFree = 0) const {
        struct statvfs status {};

        ASSERT_EQ(statvfs(storeDirectory().c_str(), &status), 0);
        const std::uint64_t available = status.f_bavail * status.f_frsize;
        ASSERT_GE(available, leftFree);
        const int file = ::open(filler().c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        ASSERT_GE(file, 0);
        EXPECT_EQ(available == leftFree ? 0
                                        : posix_fallocate(file, 0, static_cast<off_t>(available - leftFree)),
                  0);
        close(file);
    }

    void makeRoom() const { std::filesystem::remove(filler()); }

    static bool replace(Pasteboard& pasteboard, const Bytes& data) {
        const PasteboardItem item{{std::string(pasteboardType::string), Bytes::copyOf("text")},
                                  {std::string(someType), data}};
        return pasteboard.replaceWithItems({&item, 1}).has_value();
    }

    static Bytes payload(std::uint64_t size) { return Bytes::adopt(std::string(size, 'p')); }

    static void expectWritable(StorePasteboard& pasteboard) {
        for (std::uint64_t sequence = 1; sequence <= 20; ++sequence) {
            ASSERT_TRUE(writeStamped(pasteboard, {1, sequence, mebibyte}));
            ASSERT_EQ(readStamped(pasteboard).stamp, (Stamp{1, sequence, mebibyte}));
        }
    }

private:
    std::filesystem::path filler() const { return storeDirectory() / "filler"; }
};

} // namespace

TEST_F(FullDisk, aContentThatDoesNotFitLeavesThePasteboardCleared) {
    const auto pasteboard = open();
    ASSERT_TRUE(replace(*pasteboard, payload(100)));
    const std::int64_t before = pasteboard->changeCount();
    EXPECT_FALSE(replace(*pasteboard, payload(2 * diskBytes)));
    EXPECT_EQ(pasteboard->changeCount(), before + 1);
    EXPECT_TRUE(pasteboard->types().empty());
    expectWritable(*pasteboard);
}

TEST_F(FullDisk, typesThatDoNotFitLeaveTheContentAsItWas) {
    const auto pasteboard = open();
    const PasteboardItem there{{std::string(someType), Bytes::copyOf("there")}};
    const auto count = pasteboard->replaceWithItems({&there, 1});
    EXPECT_FALSE(
        pasteboard->addTypes(std::vector<Representation>{{"net.example.large", payload(2 * diskBytes)}}));
    EXPECT_EQ(pasteboard->changeCount(), count);
    EXPECT_EQ(pasteboard->types(), std::vector{std::string(someType)});
    EXPECT_EQ(pasteboard->string(someType, ample)->view(), "there");
    expectWritable(*pasteboard);
}

TEST_F(FullDisk, aContentThatDoesNotFitTakesNoSpaceForGood) {
    const auto pasteboard = open();
    expectWritable(*pasteboard);
    const std::uint64_t before = storeBytes();
    EXPECT_FALSE(replace(*pasteboard, payload(2 * diskBytes)));
    EXPECT_LE(storeBytes(), before + 4096);
}

TEST_F(FullDisk, whatOtherPasteboardsHoldIsLeftAlone) {
    const auto environment = std::make_shared<const PasteboardStore>(storeDirectory());
    StorePasteboard other(environment, "other");
    ASSERT_TRUE(writeStamped(other, {2, 1, mebibyte}));
    StorePasteboard pasteboard(environment, "name");
    EXPECT_FALSE(replace(pasteboard, payload(2 * diskBytes)));
    EXPECT_EQ(readStamped(other).stamp, (Stamp{2, 1, mebibyte}));
    EXPECT_EQ(other.changeCount(), 1);
}

TEST_F(FullDisk, withNoSpaceAtAllThePasteboardIsClearedOrLeftAsItWas) {
    const auto pasteboard = open();
    ASSERT_TRUE(replace(*pasteboard, payload(100)));
    fillUp();
    for (int attempt = 0; attempt < 10; ++attempt) {
        const std::int64_t before = pasteboard->changeCount();
        const bool wasEmpty = pasteboard->types().empty();
        EXPECT_FALSE(replace(*pasteboard, payload(2 * diskBytes)));
        const std::int64_t after = pasteboard->changeCount();
        ASSERT_TRUE(after == before || after == before + 1);
        EXPECT_EQ(pasteboard->types().empty(), wasEmpty || after == before + 1);
        const auto cleared = pasteboard->replaceWithItems({});
        EXPECT_EQ(pasteboard->changeCount(), cleared.value_or(after));
    }
    makeRoom();
    expectWritable(*pasteboard);
}

TEST_F(FullDisk, aNewProgramReadsAndIsRefused) {
    {
        const auto pasteboard = open();
        ASSERT_TRUE(writeStamped(*pasteboard, {1, 1, mebibyte}));
        fillUp();
    }
    const auto reader = start({"hold"});
    ASSERT_EQ(reader->nextLine(), "holding");
    reader->closeInput();
    EXPECT_EQ(reader->waitForExit(), 0);

    const auto writer = start({"write", "2", "1", std::to_string(2 * diskBytes)});
    ASSERT_EQ(writer->nextLine(), "ready");
    writer->sendLine("go");
    EXPECT_EQ(writer->nextLine(), std::nullopt) << "it is not done";
    const int status = writer->waitForExit();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1) << "a refusal, and no crash";
    makeRoom();
    expectWritable(*open());
}

TEST_F(FullDisk, aStoreThatCannotBeMadeIsRefusedAndMadeWhenThereIsSpace) {
    int refusals = 0;
    int successes = 0;
    // With every amount of space, so that each step of the store's creation fails once.
    for (std::uint64_t leftFree = 0; leftFree <= std::uint64_t{160} * 1024; leftFree += 4096) {
        fillUp(leftFree);
        const int status = start({"write", "1", "1", "100"})->waitForExit();
        ASSERT_TRUE(WIFEXITED(status)) << "with " << leftFree << " bytes free it crashed";
        ++(WEXITSTATUS(status) == 0 ? successes : refusals);
        makeRoom();
        ASSERT_TRUE(writeStamped(*open(), {2, 1, 100})) << "after " << leftFree << " bytes were free";
        for (const auto& entry : std::filesystem::directory_iterator(storeDirectory()))
            std::filesystem::remove(entry);
    }
    EXPECT_GT(refusals, 0);
    EXPECT_GT(successes, 0);
}

} // namespace tavel
