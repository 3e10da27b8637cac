#include "Tests/Support/ReadingLimits.h"

#include "Tests/Support/WaitUntil.h"
#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/X11Peers.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cstdint>
#include <functional>

namespace tavel {

namespace {

using testing::SizeIs;

// What is fetched of values that are larger than their reader takes.
class ReadingLimits : public testing::Test {
protected:
    /// The bytes that the server sends to the program during the operation.
    std::uint64_t bytesSentDuring(const std::function<void()>& operation) {
        const std::uint64_t before = bytesSent();
        operation();
        return bytesSent() - before;
    }

    std::optional<std::string> data(std::size_t limit) {
        const auto read = peers.board().data("public.png", limit);
        return read ? std::optional(std::string(read->view())) : std::nullopt;
    }

    X11Peers peers{longTimeOuts()};
    ScriptedOwner owner{peers.display()};

private:
    std::uint64_t bytesSent() {
        std::uint64_t bytes = 0;
        peers.program().run([&] { bytes = xcb_total_read(peers.program().selections().connection().get()); });
        return bytes;
    }
};

TEST_F(ReadingLimits, aPropertyIsFetchedNoFurtherThanItsReaderTakes) {
    const std::string bytes = distinctBytes(8'000'000);
    owner.offerValue("image/png", bytes);
    owner.take();
    static_cast<void>(peers.board().types());
    for (const std::size_t limit :
         {std::size_t{0}, std::size_t{511}, std::size_t{512}, std::size_t{100'000}}) {
        const auto sent = bytesSentDuring([&] { EXPECT_EQ(data(limit), bytes.substr(0, limit + 1)); });
        EXPECT_LT(sent, limit + 2'000) << limit;
        EXPECT_TRUE(owner.awaitDeletion(owner.requests().back()));
    }
    EXPECT_EQ(data(bytes.size() - 1), bytes);
    EXPECT_EQ(data(bytes.size()), bytes);
}

TEST_F(ReadingLimits, aPropertyOfWhichTheRestIsNotFetchedIsDeleted) {
    owner.offerValue("image/png", distinctBytes(5'000));
    owner.take();
    EXPECT_THAT(data(100).value(), SizeIs(101));
    EXPECT_TRUE(owner.awaitDeletion(owner.awaitRequest("image/png")));
}

TEST_F(ReadingLimits, incrementsPastTheLimitAreLetThroughToTheirEndUnread) {
    const std::string part = distinctBytes(1'000'000);
    std::atomic<bool> isComplete = false;
    owner.offer({"image/png"});
    owner.on("image/png", [&](const auto& request) {
        owner.announce(request, 10'000'000);
        owner.notify(request);
        isComplete = owner.sendIncrements(request, "image/png", std::vector<std::string>(10, part));
    });
    owner.take();
    const auto sent = bytesSentDuring([&] {
        EXPECT_EQ(data(1'500'000), part + part.substr(0, 500'001)) << "without waiting for the owner's end";
        waitUntil([&] { return isComplete.load(); }, atOnce);
        EXPECT_TRUE(isComplete);
    });
    EXPECT_LT(sent, 1'520'000U);
}

TEST_F(ReadingLimits, theNextValueIsReadWhileThatOfALongOneIsLetThrough) {
    std::atomic<bool> goesOn = false;
    ScriptedOwner second(peers.display());
    second.offerValue("image/png", "next");
    owner.offer({"image/png"});
    owner.on("image/png", [&](const auto& request) {
        owner.announce(request, 10);
        owner.notify(request);
        owner.sendIncrements(request, "image/png", {"more than", "the limit"});
        goesOn = true;
    });
    owner.take();
    EXPECT_EQ(data(3), "more");
    second.take();
    EXPECT_EQ(data(4), "next");
    waitUntil([&] { return goesOn.load(); }, atOnce);
    EXPECT_TRUE(goesOn);
}

TEST_F(ReadingLimits, aListOfFilesIsFetchedNoFurtherThanItsLimitsNeed) {
    constexpr FileListLimit limit{10'000, 2'097'152};
    std::string list;
    while (list.size() < 12'000'000)
        list += "file:///a\r\n";
    owner.offerValue("text/uri-list", list);
    owner.take();
    static_cast<void>(peers.board().types());
    const auto sent = bytesSentDuring([&] {
        const FileList files = peers.board().files(limit);
        EXPECT_FALSE(files.isComplete);
        EXPECT_THAT(files.paths, SizeIs(10'000));
    });
    EXPECT_LT(sent, largestUrlBytes(limit) + 2'000);
}

} // namespace

} // namespace tavel
