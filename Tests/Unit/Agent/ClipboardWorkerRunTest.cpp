#include "Platform/PasteboardTypes.h"
#include "Support/Files.h"
#include "Support/Uuid.h"
#include "Tests/Unit/Agent/WorkerFixture.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

class ClipboardWorkerRun : public WorkerFixture {
protected:
    /// The parent sends these bytes and closes its end.
    void sendAll(std::string_view content) {
        EXPECT_TRUE(writeAll(commands.writer(), content));
        commands.closeWriter();
    }

    /// Makes the next pass run the command reader to the end of input.
    void planReading() {
        platform.loop.planPass([this] { platform.loop.runBackgroundJobs(); });
    }

    void planQuitting() {
        platform.loop.planPass([this] { worker->handle(command::Quit{99}); });
    }

    std::vector<std::string> entriesOfTemporaryDirectory() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(platform.scratch.path()))
            names.push_back(entry.path().filename().string());
        return names;
    }
};

TEST_F(ClipboardWorkerRun, endsAtTheEndOfInput) {
    makeWorker();
    sendAll("");
    planReading();
    worker->run();
    EXPECT_EQ(messages(), std::vector<Json>());
    EXPECT_EQ(platform.loop.passes(), 1U);
}

TEST_F(ClipboardWorkerRun, handlesTheCommandsBeforeTheEndOfInput) {
    makeWorker();
    sendAll("{\"command\":\"ping\",\"request_id\":1}\n{\"command\":\"ping\",\"request_id\":2}");
    planReading();
    worker->run();
    EXPECT_EQ(messages(), (std::vector<Json>{success(1, 41), success(2, 41)}));
}

TEST_F(ClipboardWorkerRun, endsAfterQuit) {
    makeWorker();
    sendAll("{\"command\":\"quit\",\"request_id\":1}\n");
    planReading();
    worker->run();
    EXPECT_EQ(messages(), std::vector<Json>{success(1, 41)});
    EXPECT_EQ(platform.loop.passes(), 1U);
}

TEST_F(ClipboardWorkerRun, handlesNothingAfterQuit) {
    makeWorker();
    sendAll("{\"command\":\"quit\",\"request_id\":1}\n"
            "{\"command\":\"write_text\",\"request_id\":2,\"text_b64\":\"aGk\",\"marker\":\"\"}\n"
            "{\"command\":\"discard_pending\",\"request_id\":3}\n");
    planReading();
    worker->run();
    EXPECT_EQ(messages(), std::vector<Json>{success(1, 41)});
    EXPECT_EQ(pasteboard().calls(), std::vector<std::string>());
}

TEST_F(ClipboardWorkerRun, readsCommandsAsSoonAsThereIsAThread) {
    makeWorker();
    sendAll("{\"command\":\"ping\",\"request_id\":1}\n");
    platform.loop.refuseJobs(4); // one of them removes left-overs
    for (int pass = 0; pass < 3; ++pass)
        platform.loop.planPass([this] { EXPECT_EQ(platform.loop.heldBackgroundJobs(), 0U); });
    planReading();
    worker->run();
    EXPECT_EQ(messages(), std::vector<Json>{success(1, 41)});
}

TEST_F(ClipboardWorkerRun, endsThoughNobodyReadsItsOutputAndNothingTellsThatTheParentIsGone) {
    Pipe unread;
    worker = std::make_shared<ClipboardWorker>(
        platform, ClipboardWorker::Pipes{commands.reader(), unread.writer(), 300ms}, 0, std::nullopt);
    sendAll("{\"command\":\"ping\",\"request_id\":1}\n");
    platform.loop.planPass([this] {
        pasteboard().copyFromOutside(std::string(3'000'000, 'a')); // more than the pipe holds
        worker->poll();
    });
    planReading();
    worker->run();
    EXPECT_FALSE(worker->hasWrittenOutput());
    // The writing thread can end, and the worker with it.
    auto rest = std::async(std::launch::async, [&unread] { return unread.drain(); });
    flush();
    unread.closeWriter();
}

TEST_F(ClipboardWorkerRun, endsWhenItIsStopped) {
    makeWorker();
    platform.loop.planPass([] {});
    platform.loop.planPass([this] { worker->stop(); });
    worker->run();
    EXPECT_EQ(platform.loop.passes(), 2U);
}

TEST_F(ClipboardWorkerRun, endsAtTheFirstTickForAParentThatIsNotItsOwn) {
    makeWorker(getpid());
    pasteboard().copyFromOutside("a");
    worker->run(); // no event comes
    EXPECT_EQ(messages(), std::vector<Json>());
    EXPECT_EQ(platform.loop.passes(), 1U);
}

TEST_F(ClipboardWorkerRun, pollsEveryTenthOfASecond) {
    makeWorker();
    platform.loop.planPass([this] {
        pasteboard().copyFromOutside("a");
        platform.loop.advance(99ms);
        EXPECT_EQ(messages(), std::vector<Json>());
        platform.loop.advance(1ms);
        EXPECT_EQ(messages().size(), 2U);
        pasteboard().copyFromOutside("b");
        platform.loop.advance(99ms);
        EXPECT_EQ(messages(), std::vector<Json>());
        platform.loop.advance(1ms);
        EXPECT_EQ(messages().size(), 2U);
    });
    planQuitting();
    worker->run();
}

/// Where functions run during the wait, each further pass would wake the process once more.
TEST_F(ClipboardWorkerRun, aPassOutlastsManyTicks) {
    makeWorker();
    platform.loop.postAfter(950ms, [this] { worker->stop(); });
    worker->run();
    EXPECT_EQ(platform.loop.passes(), 1U);
    EXPECT_EQ(platform.loop.now(), 950ms);
}

TEST_F(ClipboardWorkerRun, aTickEndsTheWaitOfALoopThatHasMissedTheStop) {
    makeWorker();
    platform.loop.postAfter(30ms, [this] {
        worker->stop();
        platform.loop.loseWakeUp();
    });
    worker->run();
    EXPECT_EQ(platform.loop.now(), 100ms);
}

TEST_F(ClipboardWorkerRun, looksForAThreadEveryTenthOfASecond) {
    makeWorker();
    platform.loop.refuseJobs(2); // one of them removes left-overs
    platform.loop.postAfter(150ms, [this] {
        EXPECT_EQ(platform.loop.heldBackgroundJobs(), 1U);
        worker->stop();
    });
    worker->run();
}

TEST_F(ClipboardWorkerRun, isAnAccessory) {
    makeWorker();
    EXPECT_FALSE(platform.isAccessory);
    planQuitting();
    worker->run();
    EXPECT_TRUE(platform.isAccessory);
}

TEST_F(ClipboardWorkerRun, hasAPrivateExportDirectoryWhileItRuns) {
    makeWorker();
    EXPECT_EQ(entriesOfTemporaryDirectory(), std::vector<std::string>());
    platform.loop.planPass([this] {
        struct stat status {};
        ASSERT_EQ(stat(worker->exportDirectory().c_str(), &status), 0);
        EXPECT_TRUE(S_ISDIR(status.st_mode));
        EXPECT_EQ(status.st_mode & 07777U, 0700U);
        EXPECT_EQ(entriesOfTemporaryDirectory(),
                  std::vector<std::string>{worker->exportDirectory().filename().string()});
        platform.scratch.makeFile(worker->exportDirectory() / "export");
    });
    planQuitting();
    worker->run();
    EXPECT_EQ(entriesOfTemporaryDirectory(), std::vector<std::string>());
}

TEST_F(ClipboardWorkerRun, namesItsExportDirectoryAfresh) {
    makeWorker();
    const fs::path first = worker->exportDirectory();
    makeWorker();
    EXPECT_EQ(first.parent_path(), platform.scratch.path());
    constexpr std::string_view prefix = "tavel-clipboard-";
    ASSERT_TRUE(first.filename().string().starts_with(prefix)) << first;
    EXPECT_TRUE(isUuid(first.filename().string().substr(prefix.size()))) << first;
    EXPECT_NE(worker->exportDirectory(), first);
}

TEST_F(ClipboardWorkerRun, makesATemporaryDirectoryThatIsMissing) {
    platform.temporary = platform.scratch / "not/yet";
    makeWorker();
    platform.loop.planPass([this] { EXPECT_TRUE(fs::is_directory(worker->exportDirectory())); });
    planQuitting();
    worker->run();
    EXPECT_FALSE(fs::exists(worker->exportDirectory()));
}

TEST_F(ClipboardWorkerRun, runsWithoutAnExportDirectory) {
    platform.temporary = platform.scratch.makeFile("file");
    makeWorker();
    sendAll("{\"command\":\"ping\",\"request_id\":1}\n");
    planReading();
    worker->run();
    EXPECT_EQ(messages(), std::vector<Json>{success(1, 41)});
}

TEST_F(ClipboardWorkerRun, leavesNothingBehindThatUsesAWorkerThatIsGone) {
    makeWorker();
    planQuitting();
    worker->run();
    static_cast<void>(messages());
    const std::weak_ptr<ClipboardWorker> gone = worker;
    worker.reset();
    EXPECT_TRUE(gone.expired());
    pasteboard().copyFromOutside("a");
    sendAll("{\"command\":\"ping\",\"request_id\":1}\n");
    platform.loop.advance(1s);
    platform.loop.runBackgroundJobs();
    platform.loop.runPosted();
    EXPECT_EQ(messages(), std::vector<Json>());
    EXPECT_EQ(pasteboard().calls(), std::vector<std::string>());
}

TEST_F(ClipboardWorkerRun, opensTheGeneralPasteboardUnlessOneIsNamed) {
    makeWorker();
    makeWorker(0, "test");
    makeWorker(0, "");
    EXPECT_EQ(platform.openedPasteboards,
              (std::vector<std::optional<std::string>>{std::nullopt, "test", ""}));
}

TEST_F(ClipboardWorkerRun, opensThePasteboardWhenALackOfMemoryHasPassed) {
    platform.pasteboardError = Error("LMDB", ENOMEM, "Cannot allocate memory");
    platform.passingErrors = 2;
    makeWorker();
    EXPECT_EQ(platform.logged, std::vector<std::string>());
    EXPECT_EQ(replyTo(command::Ping{1}), success(1, 41));
}

TEST_F(ClipboardWorkerRun, answersWithoutAPasteboard) {
    platform.pasteboardError = Error("LMDB", 13, "The store cannot be opened");
    makeWorker();
    EXPECT_EQ(platform.logged, std::vector<std::string>{"The store cannot be opened"});
    EXPECT_EQ(replyTo(command::Ping{1}), success(1, 0));
    EXPECT_EQ(replyTo(command::WriteText{2, Bytes::copyOf("hi"), "m"}),
              failure(2, "Écriture NSPasteboard impossible", 0));
    EXPECT_EQ(replyTo(command::WriteFiles{3, "files", {"/"}, "m", 0}),
              failure(3, "Écriture fichiers impossible", 0));
    worker->poll();
    EXPECT_EQ(messages(), std::vector<Json>());
}

} // namespace
} // namespace tavel
