#include "Support/Uuid.h"
#include "Tests/Support/ReadingLimits.h"
#include "Tests/Unit/Agent/WorkerFixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {
namespace {

using namespace std::chrono_literals;

constexpr std::string_view notPermitted = "Renommage : autorise Tavel Bridge dans Accessibilité et "
                                          "Surveillance de l’entrée, puis réactive l’option.";

class ClipboardWorkerFilePrompt : public WorkerFixture {
protected:
    ClipboardWorkerFilePrompt() { makeWorker(); }

    Json configured(bool on) { return replyTo(command::ConfigureFilePrompt{7, on}); }

    /// Switches the prompt on, in the file manager and with a text to paste.
    void becomeReady() {
        platform.focus.frontmost = RunningApplication{501, "com.apple.finder"};
        platform.focus.role = "AXList";
        pasteboard().copyFromOutside("Bonjour");
        static_cast<void>(polled());
        EXPECT_EQ(configured(true), success(7, 42));
    }

    KeyVerdict type(KeyEventType type) { return platform.tap.handler(KeyEvent{type, 9, 0x100000, 0}); }

    void openPanel() {
        EXPECT_EQ(type(KeyEventType::keyDown), KeyVerdict::swallow);
        EXPECT_EQ(type(KeyEventType::keyUp), KeyVerdict::swallow);
        platform.loop.advance(120ms);
        ASSERT_FALSE(platform.panels.empty());
    }

    void confirm(std::string_view stem) {
        platform.panels.back()->entered = stem;
        platform.panels.back()->actions.confirm();
    }
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

TEST_F(ClipboardWorkerFilePrompt, tellsTheParentOfTheFileThatWasPasted) {
    becomeReady();
    openPanel();
    confirm("a");
    EXPECT_EQ(messages(), std::vector<Json>());
    platform.loop.advance(150ms);
    EXPECT_EQ(platform.tap.posted.size(), 4U);
    EXPECT_EQ(messages(), (std::vector<Json>{{{"event", "file_renamed"}, {"sequence", 43}}}));
    EXPECT_EQ(pasteboard().changeCount(), 43);
}

TEST_F(ClipboardWorkerFilePrompt, pastesNothingAfterQuit) {
    becomeReady();
    openPanel();
    confirm("a");
    EXPECT_EQ(replyTo(command::Quit{8}), success(8, 42));
    platform.loop.advance(150ms);
    EXPECT_TRUE(platform.tap.posted.empty());
    EXPECT_EQ(messages(), std::vector<Json>());
    EXPECT_EQ(pasteboard().changeCount(), 42);
}

TEST_F(ClipboardWorkerFilePrompt, doesNotReportThePastedFileAsAChange) {
    becomeReady();
    openPanel();
    confirm("a");
    platform.loop.advance(150ms);
    static_cast<void>(messages());
    EXPECT_EQ(polled(), std::vector<Json>());
    pasteboard().copyFromOutside("a");
    EXPECT_EQ(polled(), (std::vector{announcement(44), textEvent("YQ", 1, 44)}));
}

TEST_F(ClipboardWorkerFilePrompt, reportsTheContentThatChangedBeforeThePaste) {
    becomeReady();
    openPanel();
    confirm("a");
    pasteboard().copyFromOutside("a");
    platform.loop.advance(150ms);
    EXPECT_EQ(messages(), std::vector<Json>());
    EXPECT_EQ(polled(), (std::vector{announcement(43), textEvent("YQ", 1, 43)}));
}

TEST_F(ClipboardWorkerFilePrompt, makesTheFileInTheDirectoryForExports) {
    becomeReady();
    openPanel();
    confirm("a");
    platform.loop.advance(150ms);
    const std::vector<std::string> paths = pasteboard().files(everyFile).paths;
    ASSERT_EQ(paths.size(), 1U);
    const std::filesystem::path directory = std::filesystem::path(paths.front()).parent_path();
    EXPECT_TRUE(directory.filename().string().starts_with("paste-"));
    EXPECT_TRUE(isUuid(directory.filename().string().substr(6)));
    const std::string exports = directory.parent_path().filename().string();
    EXPECT_TRUE(exports.starts_with("tavel-clipboard-"));
    EXPECT_TRUE(isUuid(exports.substr(16)));
    EXPECT_EQ(directory.parent_path().parent_path(), platform.temporary);
}

TEST_F(ClipboardWorkerFilePrompt, tellsTheLogAndNotTheParentWhenAFileCannotBeMade) {
    becomeReady();
    pasteboard().refuse(ScriptedPasteboard::Operation::addTypes);
    openPanel();
    confirm("a");
    platform.loop.advance(150ms);
    EXPECT_EQ(messages(), std::vector<Json>());
    EXPECT_EQ(platform.logged.size(), 1U);
    EXPECT_EQ(polled(), std::vector<Json>());
}

TEST_F(ClipboardWorkerFilePrompt, takesThePanelAwayWhenItIsSwitchedOff) {
    becomeReady();
    openPanel();
    EXPECT_EQ(configured(false), success(7, 42));
    EXPECT_FALSE(platform.panels.back()->shown);
    EXPECT_TRUE(platform.panels.back()->destroyed);
}

TEST_F(ClipboardWorkerFilePrompt, letsKeysThroughWhenTheWorkerIsGone) {
    becomeReady();
    openPanel();
    worker.reset();
    EXPECT_TRUE(platform.panels.back()->destroyed);
    EXPECT_EQ(type(KeyEventType::keyDown), KeyVerdict::pass);
    platform.loop.advance(1s);
    EXPECT_TRUE(platform.tap.posted.empty());
}

} // namespace
} // namespace tavel
