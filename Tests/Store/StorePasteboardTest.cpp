#include "Linux/Store/StorePasteboard.h"

#include "Platform/PasteboardTypes.h"
#include "Support/Error.h"
#include "Tests/Support/ReadingLimits.h"
#include "Tests/Support/TestDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

namespace tavel {

namespace {

/// What the store adds to the contract of pasteboards.
class HeadlessPasteboardStore : public testing::Test {
protected:
    static constexpr std::string_view someType = "net.example.some";

    std::shared_ptr<const PasteboardStore> openStore() const {
        return std::make_shared<const PasteboardStore>(directory());
    }

    std::filesystem::path directory() const { return scratch_.runtimeDirectory(); }

    /// Whether any file of the store contains the bytes.
    bool isOnDisk(std::string_view bytes) const {
        return std::ranges::any_of(std::filesystem::directory_iterator(directory()), [&](const auto& entry) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string content{std::istreambuf_iterator<char>(file), {}};
            return content.find(bytes) != std::string::npos;
        });
    }

    static std::optional<std::int64_t> replace(StorePasteboard& pasteboard, const Bytes& data) {
        const PasteboardItem item{{std::string(someType), data}};
        return pasteboard.replaceWithItems({&item, 1});
    }

    static Bytes largePayload(char fill) { return Bytes::adopt(std::string(std::size_t{1} << 20, fill)); }

private:
    const TestDirectory scratch_;
};

} // namespace

TEST_F(HeadlessPasteboardStore, keepsContentAndChangeCountWhenItIsClosed) {
    std::optional<std::int64_t> count;
    {
        StorePasteboard pasteboard(openStore(), "name");
        pasteboard.replaceWithItems({});
        count = replace(pasteboard, Bytes::copyOf("kept"));
    }
    StorePasteboard pasteboard(openStore(), "name");
    EXPECT_EQ(pasteboard.changeCount(), count);
    EXPECT_EQ(pasteboard.string(someType, ample)->view(), "kept");
}

TEST_F(HeadlessPasteboardStore, dataReadMayBeLetGoOnAnyThread) {
    StorePasteboard pasteboard(openStore(), "name");
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

TEST_F(HeadlessPasteboardStore, theChangeCountDoesNotGoBackWhenTooManyReadIt) {
    const auto store = openStore();
    StorePasteboard pasteboard(store, "name");
    ASSERT_TRUE(replace(pasteboard, largePayload('a')));
    const std::int64_t count = pasteboard.changeCount();

    // There are about 1,000 reader slots. Each pasteboard that was polled keeps one.
    std::vector<std::unique_ptr<StorePasteboard>> polled;
    for (int number = 0; number < 1100; ++number) {
        polled.push_back(std::make_unique<StorePasteboard>(store, "name"));
        ASSERT_EQ(polled.back()->changeCount(), count) << number;
    }
    EXPECT_EQ(pasteboard.replaceWithItems({}), count + 1) << "a write needs no reader slot";
    for (const auto& one : polled)
        ASSERT_EQ(one->changeCount(), count + 1);
    EXPECT_TRUE(replace(pasteboard, largePayload('b')));
    EXPECT_TRUE(polled.back()->data(someType, ample));
}

TEST_F(HeadlessPasteboardStore, keepsNothingOfWhatWasReplacedOrCleared) {
    const auto store = openStore();
    StorePasteboard pasteboard(store, "name");
    StorePasteboard neighbour(store, "neighbour");
    ASSERT_TRUE(replace(neighbour, Bytes::copyOf("neighbour")));
    for (std::size_t number = 0; number < 24; ++number) {
        const std::string secret = "secret" + std::to_string(number) + ';';
        std::string text;
        for (std::size_t size = 0; size <= 60 * number * number; size += secret.size())
            text += secret;
        ASSERT_TRUE(replace(pasteboard, Bytes::adopt(std::move(text))));
        ASSERT_TRUE(isOnDisk(secret)) << number;
        if (number % 3 == 0)
            ASSERT_TRUE(pasteboard.replaceWithItems({}));
        else
            ASSERT_TRUE(replace(pasteboard, Bytes::copyOf("small")));
        ASSERT_FALSE(isOnDisk(secret)) << number;
    }
    const PasteboardItem added{{"net.example.secret", Bytes::copyOf("secret")}};
    ASSERT_TRUE(pasteboard.addTypes(added));
    ASSERT_TRUE(isOnDisk("net.example.secret"));
    ASSERT_TRUE(pasteboard.replaceWithItems({}));
    EXPECT_FALSE(isOnDisk("secret"));
}

TEST_F(HeadlessPasteboardStore, addsTypesToAContentOfUpTo256MiB) {
    StorePasteboard pasteboard(openStore(), "name");
    const Bytes half = Bytes::adopt(std::string(std::size_t{128} << 20, 'x'));
    PasteboardItem item{{"net.example.first", half}, {"net.example.second", half}};
    const Representation added{"net.example.added", Bytes::copyOf("added")};
    ASSERT_TRUE(pasteboard.replaceWithItems({&item, 1}));
    EXPECT_TRUE(pasteboard.addTypes({&added, 1}));
    item.push_back({"net.example.third", Bytes::copyOf("x")});
    const auto count = pasteboard.replaceWithItems({&item, 1});
    ASSERT_TRUE(count);
    EXPECT_FALSE(pasteboard.addTypes({&added, 1}));
    EXPECT_EQ(pasteboard.changeCount(), count);
}

TEST_F(HeadlessPasteboardStore, inAMissingDirectoryIsRefused) {
    EXPECT_THROW(PasteboardStore{directory() / "missing"}, Error);
}

} // namespace tavel
