#include "Support/ScopeExit.h"
#include "TavelClipboardAgent/main/Limits.h"
#include "Tests/Unit/Agent/WorkerFixture.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <future>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {
namespace {

// The worker's life where the platform tells of contents and of the parent's end: nothing ticks.

using namespace std::chrono_literals;

class ClipboardWorkerEvents : public WorkerFixture {
protected:
    using Events = std::vector<Json>;

    ClipboardWorkerEvents() {
        pasteboard().tellNews();
        platform.tellsOfParent = true;
    }

    void plan(EventLoop::Function pass) { platform.loop.planPass(std::move(pass)); }

    /// Runs the planned passes, and goes on until nothing is left to wait for.
    void runToRest() {
        // The looks after the memory go on while output waits, and the test's clock is faster than the thread
        // that writes.
        for (int pass = 0; pass < 3; ++pass)
            plan([this] { flush(); });
        platform.loop.onRest([this] {
            ++rests_;
            EXPECT_EQ(platform.loop.pendingTimers(), 0U);
            worker->stop();
        });
        worker->run();
        EXPECT_EQ(rests_, 1) << "the agent has not come to rest";
    }

    /// The parent has taken all before that.
    void tellOfCopied(std::string_view text) {
        flush();
        pasteboard().copyFromOutside(text);
        pasteboard().notice();
    }

    void wait(std::chrono::milliseconds time) {
        flush();
        platform.loop.advance(time);
    }

private:
    int rests_ = 0;
};

TEST_F(ClipboardWorkerEvents, hasNoTimerOnceItHasLookedAfterTheMemory) {
    makeWorker(getppid());
    runToRest();
    EXPECT_GE(platform.loop.now(), 1s);
}

TEST_F(ClipboardWorkerEvents, reportsWhatItIsToldOfAtOnce) {
    makeWorker();
    plan([this] {
        tellOfCopied("a");
        EXPECT_EQ(messages(), (Events{announcement(42), textEvent("YQ", 1, 42)}));
        EXPECT_EQ(platform.loop.now(), 0ms);
    });
    runToRest();
}

TEST_F(ClipboardWorkerEvents, reportsTheLastOfABurstATenthOfASecondAfterTheFirst) {
    makeWorker();
    plan([this] {
        for (const std::string_view text : {"a", "b", "c"})
            tellOfCopied(text);
        EXPECT_EQ(messages(), (Events{announcement(42), textEvent("YQ", 1, 42)}));
        wait(99ms);
        EXPECT_EQ(messages(), Events());
        wait(1ms);
        EXPECT_EQ(messages(), (Events{announcement(44), textEvent("Yw", 1, 44)}));
    });
    runToRest();
}

TEST_F(ClipboardWorkerEvents, reportsWhatCameBeforeItListened) {
    makeWorker();
    pasteboard().copyFromOutside("a");
    runToRest();
    EXPECT_EQ(messages(), (Events{announcement(42), textEvent("YQ", 1, 42)}));
}

TEST_F(ClipboardWorkerEvents, namesTheSmallValuesThatItNeedsAtOnce) {
    makeWorker();
    runToRest();
    const std::vector<WantedValue>& watched = pasteboard().watched();
    ASSERT_EQ(watched.size(), 2U);
    EXPECT_EQ(watched[0].type, markerType);
    EXPECT_EQ(watched[0].limit, 512U);
    EXPECT_EQ(watched[1].type, "com.brennic.generated-file");
    EXPECT_EQ(watched[1].limit, 1U);
}

TEST_F(ClipboardWorkerEvents, triesAgainWhileAnotherExportRuns) {
    makeWorker();
    const auto copyPicture = [this] {
        flush();
        pasteboard().changeFromOutside({{representation("public.png", scriptedPicture(pngSignature, 2, 2))}});
        pasteboard().notice();
    };
    plan([&] {
        platform.loop.runBackgroundJobs(); // the reader and the search for left-overs
        copyPicture();
        wait(100ms);
        copyPicture();
        EXPECT_EQ(messages(), (Events{announcement(42), announcement(43)}));
        wait(100ms);
        EXPECT_EQ(messages(), Events{announcement(43)});
        platform.loop.runBackgroundJobs();
        wait(100ms);
        EXPECT_EQ(messages(), Events{announcement(43)});
        EXPECT_EQ(platform.loop.heldBackgroundJobs(), 1U) << "the second export";
        platform.loop.runBackgroundJobs();
    });
    commands.closeWriter(); // the reader ends with it
    worker->run();
}

TEST_F(ClipboardWorkerEvents, triesAgainUntilTheParentHasTakenTheLastReport) {
    Pipe unread;
    worker = std::make_shared<ClipboardWorker>(
        platform, ClipboardWorker::Pipes{commands.reader(), unread.writer()}, 0, std::nullopt);
    std::future<std::string> rest;
    const ScopeExit end([&unread] { unread.closeWriter(); }); // the drain ends, whatever fails
    plan([&] {
        tellOfCopied(std::string(3'000'000, 'a')); // more than the pipe holds
        platform.loop.advance(100ms);
        pasteboard().copyFromOutside("b");
        pasteboard().notice();
        pasteboard().forgetCalls();
        platform.loop.advance(500ms);
        EXPECT_EQ(pasteboard().calls(), std::vector<std::string>());
        rest = std::async(std::launch::async, [&unread] { return unread.drain(); });
        flush();
        wait(100ms);
        EXPECT_NE(pasteboard().calls(), std::vector<std::string>());
    });
    runToRest();
    unread.closeWriter();
    const std::string taken = rest.get();
    const std::size_t lastLine = taken.rfind('\n', taken.size() - 2) + 1;
    EXPECT_EQ(Json::parse(taken.substr(lastLine)), textEvent("Yg", 1, 43));
}

TEST_F(ClipboardWorkerEvents, losesNoNewsWithoutTheMemoryForATimer) {
    makeWorker();
    plan([this] {
        platform.loop.refuseDelays(1);
        tellOfCopied("a");
        tellOfCopied("b");
        EXPECT_EQ(messages(), (Events{announcement(42), textEvent("YQ", 1, 42)}));
    });
    runToRest();
    EXPECT_EQ(messages(), (Events{announcement(43), textEvent("Yg", 1, 43)}));
}

TEST_F(ClipboardWorkerEvents, looksForAThreadEveryTenthOfASecond) {
    makeWorker();
    platform.loop.refuseJobs(2); // one of them removes left-overs
    platform.loop.onRest([this] {
        EXPECT_EQ(platform.loop.heldBackgroundJobs(), 1U);
        EXPECT_GE(platform.loop.now(), 100ms);
        worker->stop();
    });
    worker->run();
}

TEST_F(ClipboardWorkerEvents, endsWhenTheParentIsLost) {
    makeWorker(getppid());
    plan([this] {
        ASSERT_EQ(platform.watchedParent, getppid());
        platform.onParentLost();
    });
    worker->run();
    EXPECT_EQ(platform.loop.passes(), 1U);
}

TEST_F(ClipboardWorkerEvents, watchesNoParentWithoutItsNumber) {
    platform.tellsOfParent = false;
    makeWorker(1);
    runToRest();
    EXPECT_EQ(platform.watchedParent, std::nullopt);
}

TEST_F(ClipboardWorkerEvents, ticksWhereTheParentCannotBeWatched) {
    platform.tellsOfParent = false;
    makeWorker(getppid());
    plan([this] {
        tellOfCopied("a");
        EXPECT_EQ(messages(), Events()) << "at the tick, as everywhere else";
        wait(100ms);
        EXPECT_EQ(messages(), (Events{announcement(42), textEvent("YQ", 1, 42)}));
        worker->stop();
    });
    worker->run();
}

} // namespace
} // namespace tavel
