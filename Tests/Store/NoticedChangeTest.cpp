#include "Linux/Base/GlibEventLoop.h"
#include "Tests/Store/StoppedCalls.h"
#include "Tests/Store/StoreProcessTest.h"
#include "Tests/Support/RefusedSystemCall.h"
#include "Tests/Unit/Fixtures/ForkedFunction.h"

#include <fcntl.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tavel {

namespace {

using namespace std::chrono_literals;

/// A pasteboard that is watched, and the change counts that it had when it told of changes.
class WatchedPasteboard {
public:
    explicit WatchedPasteboard(std::unique_ptr<StorePasteboard> pasteboard)
        : pasteboard_(std::move(pasteboard)) {
        if (!pasteboard_->watch({}, [this] { noticed_.push_back(pasteboard_->noticedChangeCount()); }))
            throw std::runtime_error("The pasteboard has to be polled.");
    }

    StorePasteboard& operator*() const { return *pasteboard_; }
    StorePasteboard* operator->() const { return pasteboard_.get(); }

    const std::vector<std::int64_t>& noticed() const { return noticed_; }
    std::int64_t lastNoticed() const { return noticed_.empty() ? 0 : noticed_.back(); }

private:
    std::unique_ptr<StorePasteboard> pasteboard_;
    std::vector<std::int64_t> noticed_;
};

/// What a program is told of changes by its event loop, without polling.
class NoticedChange : public StoreProcessTest {
protected:
    /// Runs what is ready.
    void serve() {
        for (int pass = 0; pass < 3; ++pass)
            loop_.runOnce(0ms);
    }

    void serveUntilNoticed(const WatchedPasteboard& pasteboard, std::int64_t count) {
        const auto end = std::chrono::steady_clock::now() + TestProcess::deadline;
        while (pasteboard.lastNoticed() != count) {
            if (std::chrono::steady_clock::now() > end)
                throw std::runtime_error("The change was not noticed.");
            loop_.runOnce(100ms);
        }
    }

    /// Starts a program that waits for a line before it writes so many contents.
    std::unique_ptr<TestProcess> startWriter(int times) const {
        auto writer = start({"write", "1", std::to_string(times), "100"});
        if (writer->nextLine() != "ready")
            throw std::runtime_error("The writer does not start.");
        return writer;
    }

    static bool isDone(TestProcess& writer) {
        writer.transfer(0ms);
        return writer.output().ends_with("done\n");
    }

private:
    GlibEventLoop loop_;
};

int openDescriptors() {
    int count = 0;
    for (int descriptor = 0; descriptor < 256; ++descriptor)
        count += fcntl(descriptor, F_GETFD) >= 0 ? 1 : 0;
    return count;
}

} // namespace

TEST_F(NoticedChange, isOneOfThisProgram) {
    const WatchedPasteboard pasteboard(open());
    const auto count = pasteboard->replaceWithItems({});
    EXPECT_TRUE(pasteboard.noticed().empty()) << "not during the write";
    serve();
    EXPECT_EQ(pasteboard.noticed(), std::vector{*count});
}

TEST_F(NoticedChange, isNoneOfAnotherPasteboard) {
    const auto store = std::make_shared<const PasteboardStore>(storeDirectory());
    const WatchedPasteboard pasteboard(std::make_unique<StorePasteboard>(store, "name"));
    const WatchedPasteboard neighbour(std::make_unique<StorePasteboard>(store, "neighbour"));
    const auto count = neighbour->replaceWithItems({});
    serve();
    EXPECT_EQ(neighbour.noticed(), std::vector{*count});
    EXPECT_TRUE(pasteboard.noticed().empty());
}

TEST_F(NoticedChange, isTheLatestOfAThousandThatAnotherProgramMakesQuickly) {
    constexpr int times = 1000;
    const WatchedPasteboard pasteboard(open());
    const auto writer = startWriter(times);
    writer->sendLine("go");
    serveUntilNoticed(pasteboard, times);
    EXPECT_EQ(writer->waitForExit(), 0);
    EXPECT_TRUE(std::ranges::is_sorted(pasteboard.noticed()));
}

TEST_F(NoticedChange, isNoticedWheneverItsWriterIsSlow) {
    const WatchedPasteboard pasteboard(open());
    const auto writer = startWriter(1);
    StoppedCalls calls(writer->processIdentifier());
    writer->sendLine("go");
    while (!isDone(*writer)) {
        calls.toTheNext();
        serve(); // takes every event that has come, however early in the write
    }
    EXPECT_EQ(pasteboard.noticed(), std::vector<std::int64_t>{1}) << "the writer has not ended yet";
}

TEST_F(NoticedChange, isNoticedWheneverItsWriterIsKilled) {
    const WatchedPasteboard pasteboard(open());
    bool hasWritten = false;
    for (int survived = 0; !hasWritten; ++survived) {
        const auto writer = startWriter(1);
        {
            StoppedCalls calls(writer->processIdentifier());
            writer->sendLine("go");
            for (int call = 0; call < survived && !isDone(*writer); ++call)
                calls.toTheNext();
            hasWritten = isDone(*writer);
            serve(); // only what comes from now on can tell
            kill(writer->processIdentifier(), SIGKILL);
        }
        writer->kill();
        serve();
        ASSERT_EQ(pasteboard.lastNoticed(), pasteboard->changeCount()) << "killed after " << survived;
    }
    EXPECT_GT(pasteboard.noticed().size(), 1U);
}

TEST_F(NoticedChange, hasToBePolledForWhereTheSystemCannotTell) {
    struct Refusal {
        long call;
        int error;
    };
    for (const Refusal refusal : {Refusal{SYS_inotify_init1, EMFILE}, Refusal{SYS_inotify_init1, ENOSYS},
                                  Refusal{SYS_inotify_add_watch, ENOSPC}}) {
        EXPECT_EQ(exitStatusOf([&] {
                      const auto pasteboard = open();
                      refuseSystemCall(refusal.call, refusal.error);
                      pasteboard->changeCount();
                      const int before = openDescriptors();
                      const bool isWatched = pasteboard->watch({}, [] {});
                      return !isWatched && openDescriptors() == before ? 0 : 1;
                  }),
                  0)
            << refusal.call << ' ' << refusal.error;
    }
}

} // namespace tavel
