#include "Tests/Unit/Agent/WorkerFixture.h"

#include <gtest/gtest.h>

#include <memory>
#include <string_view>
#include <vector>

namespace tavel {
namespace {

constexpr std::string_view notPermitted = "Renommage : autorise Tavel Bridge dans Accessibilité et "
                                          "Surveillance de l’entrée, puis réactive l’option.";

class ClipboardWorkerFilePrompt : public WorkerFixture {
protected:
    ClipboardWorkerFilePrompt() { makeWorker(); }

    Json configured(bool on) { return replyTo(command::ConfigureFilePrompt{7, on}); }
};

TEST_F(ClipboardWorkerFilePrompt, tapsNoKeyboardBeforeItIsSwitchedOn) {
    static_cast<void>(replyTo(command::Ping{7}));
    EXPECT_EQ(configured(false), success(7, 41));
    EXPECT_EQ(platform.tap.creations, 0);
    EXPECT_EQ(platform.tap.enabled, std::vector<bool>());
}

TEST_F(ClipboardWorkerFilePrompt, tapsTheKeyboardWhenItIsSwitchedOn) {
    EXPECT_EQ(configured(true), success(7, 41));
    EXPECT_EQ(platform.tap.creations, 1);
    ASSERT_TRUE(platform.tap.handler);
    EXPECT_EQ(platform.tap.handler(KeyEvent{.keyCode = 0}), KeyVerdict::pass);
}

TEST_F(ClipboardWorkerFilePrompt, switchesTheOneTapOffAndOn) {
    for (const bool on : {true, true, false, false, true})
        EXPECT_EQ(configured(on), success(7, 41));
    EXPECT_EQ(platform.tap.creations, 1);
    EXPECT_EQ(platform.tap.enabled, (std::vector{true, false, false, true}));
}

TEST_F(ClipboardWorkerFilePrompt, tellsTheUserWhatToPermitWhenTheTapIsRefused) {
    platform.tap.allowed = false;
    EXPECT_EQ(configured(true), failure(7, notPermitted, 41));
    EXPECT_EQ(platform.tap.creations, 1);
    EXPECT_EQ(configured(false), success(7, 41));
    EXPECT_EQ(platform.tap.enabled, std::vector<bool>());
}

TEST_F(ClipboardWorkerFilePrompt, triesAgainAfterARefusal) {
    platform.tap.allowed = false;
    EXPECT_EQ(configured(true), failure(7, notPermitted, 41));
    EXPECT_EQ(configured(true), failure(7, notPermitted, 41));
    platform.tap.allowed = true;
    EXPECT_EQ(configured(true), success(7, 41));
    EXPECT_EQ(platform.tap.creations, 3);
}

TEST_F(ClipboardWorkerFilePrompt, hasOneFilePasteForTheWorkersLife) {
    EXPECT_EQ(&worker->filePaste(), &worker->filePaste());
}

TEST_F(ClipboardWorkerFilePrompt, doesNotKeepTheWorkerAlive) {
    static_cast<void>(configured(true));
    const std::weak_ptr<ClipboardWorker> gone = worker;
    worker.reset();
    EXPECT_TRUE(gone.expired());
}

} // namespace
} // namespace tavel
