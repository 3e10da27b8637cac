#include "Linux/Store/StorePasteboard.h"

#include "Platform/PasteboardTypes.h"
#include "Support/Error.h"
#include "Tests/Support/ReadingLimits.h"
#include "Tests/Support/TestDirectory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

namespace tavel {

namespace {

/// What the store adds to the contract of pasteboards.
class HeadlessPasteboardStore : public testing::Test {
protected:
    static constexpr std::string_view someType = "net.example.some";

    std::shared_ptr<const LmdbEnvironment> openEnvironment() const {
        return std::make_shared<const LmdbEnvironment>(directory());
    }

    std::filesystem::path directory() const { return scratch_.runtimeDirectory(); }
    std::filesystem::path storeFile() const { return directory() / "pasteboards-1.mdb"; }

    static std::optional<std::int64_t> replace(StorePasteboard& pasteboard, const Bytes& data) {
        const PasteboardItem item{{std::string(someType), data}};
        return pasteboard.replaceWithItems({&item, 1});
    }

    /// Large enough to be shared with the store and not copied.
    static Bytes largePayload(char fill) { return Bytes::adopt(std::string(std::size_t{1} << 20, fill)); }

private:
    const TestDirectory scratch_;
};

} // namespace

TEST_F(HeadlessPasteboardStore, keepsContentAndChangeCountWhenItIsClosed) {
    std::optional<std::int64_t> count;
    {
        StorePasteboard pasteboard(openEnvironment(), "name");
        pasteboard.replaceWithItems({});
        count = replace(pasteboard, Bytes::copyOf("kept"));
    }
    StorePasteboard pasteboard(openEnvironment(), "name");
    EXPECT_EQ(pasteboard.changeCount(), count);
    EXPECT_EQ(pasteboard.string(someType, ample)->view(), "kept");
}

TEST_F(HeadlessPasteboardStore, dataReadMayBeLetGoOnAnyThread) {
    StorePasteboard pasteboard(openEnvironment(), "name");
    ASSERT_TRUE(replace(pasteboard, largePayload('a')));
    auto read = pasteboard.data(someType, ample);
    ASSERT_TRUE(read);
    bool equal = false;
    std::thread([&, taken = std::move(*read)]() mutable {
        equal = taken.view() == largePayload('a').view();
        taken = Bytes();
    }).join();
    read.reset();
    EXPECT_TRUE(equal);
    EXPECT_TRUE(pasteboard.replaceWithItems({}));
}

TEST_F(HeadlessPasteboardStore, theChangeCountDoesNotGoBackWhenTooMuchIsBeingReadAtOnce) {
    const auto environment = openEnvironment();
    StorePasteboard pasteboard(environment, "name");
    ASSERT_TRUE(replace(pasteboard, largePayload('a')));
    StorePasteboard polled(environment, "name");
    const std::int64_t count = polled.changeCount();

    // Each holds a snapshot of the store; there are about 1,000 reader slots.
    std::vector<Bytes> held;
    while (const auto read = pasteboard.data(someType, ample)) {
        held.push_back(*read);
        ASSERT_LT(held.size(), 5000U) << "the number of slots has no limit";
    }
    EXPECT_GE(held.size(), 900U);
    EXPECT_EQ(polled.changeCount(), count);
    EXPECT_EQ(pasteboard.replaceWithItems({}), count + 1) << "a write needs no reader slot";
    EXPECT_EQ(pasteboard.changeCount(), count + 1);
    EXPECT_EQ(polled.changeCount(), count + 1);
    held.clear();
    EXPECT_TRUE(replace(pasteboard, largePayload('b')));
    EXPECT_TRUE(polled.data(someType, ample));
}

TEST_F(HeadlessPasteboardStore, whoseFileIsNoStoreIsRefusedAndLeftAsItIs) {
    const auto garbage = [&](std::size_t size) {
        std::string content;
        while (content.size() < size)
            content += "This is no store. ";
        return content;
    };
    const TestDirectory elsewhere;
    const auto file = elsewhere.createFile("runtime/pasteboards-1.mdb", garbage(100'000));
    const auto size = std::filesystem::file_size(file);
    EXPECT_THROW(LmdbEnvironment{elsewhere.runtimeDirectory()}, Error);
    EXPECT_EQ(std::filesystem::file_size(file), size);
}

TEST_F(HeadlessPasteboardStore, inAMissingDirectoryIsRefused) {
    EXPECT_THROW(LmdbEnvironment{directory() / "missing"}, Error);
}

TEST_F(HeadlessPasteboardStore, whoseMakingWasCutShortIsMadeAnew) {
    { StorePasteboard(openEnvironment(), "name").replaceWithItems({}); }
    // A full disk, or the death of the process that created the file, may leave any part of its beginning.
    for (const std::uintmax_t size : {std::uintmax_t{0}, std::uintmax_t{100}, std::uintmax_t{4096}}) {
        std::filesystem::resize_file(storeFile(), size);
        StorePasteboard pasteboard(openEnvironment(), "name");
        EXPECT_EQ(replace(pasteboard, Bytes::copyOf("text")), 1) << size << " bytes were there";
    }
}

} // namespace tavel
