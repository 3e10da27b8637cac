#include "Tests/Store/StoreProcessTest.h"

namespace tavel {

namespace {

class SharedStore : public StoreProcessTest {
protected:
    /// Writes new contents of 1 MiB, as many as the argument says.
    class Rewriter {
    public:
        explicit Rewriter(std::unique_ptr<StorePasteboard> pasteboard) : pasteboard_(std::move(pasteboard)) {}

        void operator()(int times) {
            for (int time = 0; time < times; ++time)
                ASSERT_TRUE(writeStamped(*pasteboard_, {0, ++sequence_, mebibyte}));
        }

    private:
        std::unique_ptr<StorePasteboard> pasteboard_;
        std::uint64_t sequence_ = 0;
    };
};

} // namespace

TEST_F(SharedStore, countsEveryChangeOfTwoProgramsThatWriteAtOnce) {
    constexpr int timesEach = 200;
    const auto first = start({"write", "1", std::to_string(timesEach), "5000"});
    const auto second = start({"write", "2", std::to_string(timesEach), "70000"});
    for (TestProcess* const writer : {first.get(), second.get()})
        ASSERT_EQ(writer->nextLine(), "ready");
    for (TestProcess* const writer : {first.get(), second.get()})
        writer->sendLine("go");
    for (TestProcess* const writer : {first.get(), second.get()}) {
        EXPECT_EQ(writer->nextLine(), "done");
        EXPECT_EQ(writer->waitForExit(), 0);
    }
    const auto [count, stamp] = readStamped(*open());
    EXPECT_EQ(count, 2 * timesEach);
    ASSERT_TRUE(stamp);
    EXPECT_EQ(stamp->sequence, timesEach) << "the last content is some writer's last";
}

TEST_F(SharedStore, canBeMadeByProgramsThatStartAtOnce) {
    constexpr int programCount = 8;
    constexpr int rounds = 5;
    for (int round = 0; round < rounds; ++round) {
        std::vector<std::unique_ptr<TestProcess>> writers;
        for (int writer = 1; writer <= programCount; ++writer)
            writers.push_back(start({"write", std::to_string(writer), "1", "100"}));
        for (const auto& writer : writers)
            EXPECT_EQ(writer->waitForExit(), 0);
        EXPECT_EQ(open()->changeCount(), programCount) << "all of them wrote to one store";
        for (const auto& entry : std::filesystem::directory_iterator(storeDirectory()))
            std::filesystem::remove(entry);
    }
}

TEST_F(SharedStore, showsOtherProgramsWholeContentsInOrder) {
    const auto watcher = start({"watch", "40"});
    const auto secondWatcher = start({"watch", "40"});
    ASSERT_EQ(watcher->nextLine(), "ready");
    ASSERT_EQ(secondWatcher->nextLine(), "ready");
    const auto small = start({"write-on", "1", "300"});
    const auto large = start({"write-on", "2", "200000"});
    ASSERT_EQ(small->nextLine(), "writing");
    ASSERT_EQ(large->nextLine(), "writing");
    EXPECT_EQ(watcher->nextLine(), "seen");
    EXPECT_EQ(secondWatcher->nextLine(), "seen");
    EXPECT_EQ(watcher->waitForExit(), 0);
    EXPECT_EQ(secondWatcher->waitForExit(), 0);
}

TEST_F(SharedStore, isSeenAlikeByAProgramThatHasItOpenAlready) {
    const auto ours = open();
    const std::int64_t before = ours->changeCount();
    const auto writer = start({"write", "1", "3", "100000"});
    ASSERT_EQ(writer->nextLine(), "ready");
    writer->sendLine("go");
    ASSERT_EQ(writer->nextLine(), "done");
    const auto [count, stamp] = readStamped(*ours);
    EXPECT_EQ(count, before + 3);
    EXPECT_EQ(stamp, (Stamp{1, 3, 100000}));
}

TEST_F(SharedStore, keepsContentAndChangeCountWhenEveryProgramHasEnded) {
    for (int run = 1; run <= 3; ++run) {
        const auto writer = start({"write", std::to_string(run), "5", "300000"});
        ASSERT_EQ(writer->nextLine(), "ready");
        writer->sendLine("go");
        ASSERT_EQ(writer->waitForExit(), 0);
        const auto [count, stamp] = readStamped(*open());
        EXPECT_EQ(count, run * 5);
        EXPECT_EQ(stamp, (Stamp{static_cast<std::uint64_t>(run), 5, 300000}));
    }
}

TEST_F(SharedStore, keepsWhatAReaderHoldsAsItWasUntilTheReaderEnds) {
    const auto ours = open();
    ASSERT_TRUE(writeStamped(*ours, {0, 0, mebibyte}));
    const auto holder = start({"hold"});
    ASSERT_EQ(holder->nextLine(), "holding");
    for (std::uint64_t sequence = 1; sequence <= 50; ++sequence)
        ASSERT_TRUE(writeStamped(*ours, {0, sequence, mebibyte}));
    holder->sendLine("look");
    EXPECT_EQ(holder->waitForExit(), 0);
}

TEST_F(SharedStore, takesNoSpaceForWhatWasReplaced) {
    Rewriter rewrite(open());
    rewrite(10);
    const std::uint64_t afterFew = storeBytes();
    EXPECT_LE(afterFew, mebibyte + mebibyte / 2);
    const auto holder = start({"hold"});
    ASSERT_EQ(holder->nextLine(), "holding");
    rewrite(100);
    EXPECT_EQ(storeBytes(), afterFew) << "also while a program holds what it has read";
}

} // namespace tavel
