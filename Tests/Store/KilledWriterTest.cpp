#include "Tests/Store/StoreProcessTest.h"

#include <random>
#include <thread>

namespace tavel {

namespace {

/// What running and newly started programs find after a writer was killed at an arbitrary moment.
class KilledWriter : public StoreProcessTest {
protected:
    static constexpr int kills = 40;

    /// Starts a writer of large contents and kills it shortly after its first one.
    void startAndKill(int writer) {
        const auto child = start({"write-on", std::to_string(writer), std::to_string(mebibyte)});
        ASSERT_EQ(child->nextLine(), "writing");
        // At an arbitrary moment during the next few writes.
        std::this_thread::sleep_for(std::chrono::microseconds(random_() % 12'000));
        child->kill();
    }

    /// Checks the content that the writer left, and that a new write succeeds.
    void expectWholeAndWritable(StorePasteboard& pasteboard, int writer) {
        const auto [count, stamp] = readStamped(pasteboard);
        ASSERT_TRUE(stamp) << "after kill " << writer;
        EXPECT_EQ(stamp->writer, static_cast<std::uint64_t>(writer));
        // The content and the change count change together.
        EXPECT_EQ(count, lastCount_ + static_cast<std::int64_t>(stamp->sequence));

        ASSERT_TRUE(writeStamped(pasteboard, {0, static_cast<std::uint64_t>(writer), mebibyte}));
        // If the writer was killed between the commit of its last change and its announcement, running
        // programs see that change only together with the next one.
        lastCount_ = pasteboard.changeCount();
        EXPECT_TRUE(lastCount_ == count + 1 || lastCount_ == count + 2) << lastCount_ << " after " << count;
        EXPECT_EQ(readStamped(pasteboard).stamp, (Stamp{0, static_cast<std::uint64_t>(writer), mebibyte}));
    }

private:
    std::minstd_rand random_{std::random_device{}()};
    std::int64_t lastCount_ = 0;
};

} // namespace

TEST_F(KilledWriter, leavesAStoreThatOpensWithAWholeContent) {
    for (int writer = 1; writer <= kills && !HasFatalFailure(); ++writer) {
        startAndKill(writer);
        expectWholeAndWritable(*open(), writer);
    }
    RecordProperty("storeBytes", std::to_string(storeBytes()));
    EXPECT_LE(storeBytes(), 16 * mebibyte) << "what the killed ones wrote takes up no space for ever";
}

TEST_F(KilledWriter, leavesNothingThatTheNextWriteDoesNotRemove) {
    const auto ours = open();
    for (int writer = 1; writer <= kills; ++writer) {
        startAndKill(writer);
        ASSERT_TRUE(writeStamped(*ours, {0, static_cast<std::uint64_t>(writer), 100}));
        ASSERT_LT(storeBytes(), mebibyte) << "the killed one wrote a mebibyte";
    }
}

TEST_F(KilledWriter, leavesProgramsThatAreRunningToGoOn) {
    const auto ours = open();
    const auto watcher = start({"watch", "1"});
    ASSERT_EQ(watcher->nextLine(), "ready");
    for (int writer = 1; writer <= kills && !HasFatalFailure(); ++writer) {
        startAndKill(writer);
        expectWholeAndWritable(*ours, writer);
    }
    EXPECT_EQ(watcher->waitForExit(), 0);
    RecordProperty("storeBytes", std::to_string(storeBytes()));
    EXPECT_LE(storeBytes(), 16 * mebibyte) << "what the killed ones wrote takes up no space for ever";
}

TEST_F(KilledWriter, doesNotKeepOthersThatWaitToWrite) {
    const auto ours = open();
    for (int round = 1; round <= kills; ++round) {
        const auto other = start({"write", "1000", "10", "100000"});
        const auto victim = start({"write-on", "2000", std::to_string(mebibyte)});
        ASSERT_EQ(other->nextLine(), "ready");
        ASSERT_EQ(victim->nextLine(), "writing");
        other->sendLine("go");
        victim->kill();
        ASSERT_EQ(other->waitForExit(), 0);
        ASSERT_TRUE(readStamped(*ours).stamp);
    }
}

} // namespace tavel
