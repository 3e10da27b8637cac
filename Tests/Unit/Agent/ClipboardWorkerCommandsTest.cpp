#include "Platform/PasteboardTypes.h"
#include "TavelClipboardAgent/main/Limits.h"
#include "Tests/Unit/Agent/WorkerFixture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {
namespace {

using Operation = ScriptedPasteboard::Operation;
using Calls = std::vector<std::string>;

constexpr std::string_view invalidText = "Texte clipboard invalide";
constexpr std::string_view textWriteFailed = "Écriture NSPasteboard impossible";
constexpr std::string_view invalidFiles = "Fichiers clipboard invalides";
constexpr std::string_view filesWriteFailed = "Écriture fichiers impossible";
constexpr std::string_view changedDuringTransfer = "Le presse-papiers local a changé pendant le transfert";

command::WriteText writeText(std::string_view text, std::string marker = "m") {
    return {7, Bytes::copyOf(text), std::move(marker)};
}

command::WriteFiles writeFiles(std::vector<std::string> paths) {
    return {7, "files", std::move(paths), "m", std::nullopt};
}

class ClipboardWorkerCommands : public WorkerFixture {
protected:
    ClipboardWorkerCommands() { makeWorker(); }

    /// Expects an unchanged pasteboard, whose content the next poll reports.
    void expectUntouched() {
        for (const std::string& call : pasteboard().calls())
            EXPECT_EQ(call.find("replace"), std::string::npos);
        EXPECT_EQ(pasteboard().changeCount(), 41);
    }
};

TEST_F(ClipboardWorkerCommands, answersAPing) {
    EXPECT_EQ(replyTo(command::Ping{7}), success(7, 41));
    EXPECT_EQ(replyTo(command::Ping{UINT64_MAX}), success(UINT64_MAX, 41));
    expectUntouched();
}

TEST_F(ClipboardWorkerCommands, tellsTheCurrentSequence) {
    pasteboard().copyFromOutside("a");
    EXPECT_EQ(replyTo(command::Ping{7}), success(7, 42));
}

TEST_F(ClipboardWorkerCommands, doesNotKnowAnUnknownCommand) {
    EXPECT_EQ(replyTo(command::Unknown{7}), failure(7, "Commande clipboard inconnue", 41));
}

TEST_F(ClipboardWorkerCommands, neverReportsWhatWasThereWhenPendingExportsAreDiscarded) {
    pasteboard().copyFromOutside("a");
    EXPECT_EQ(replyTo(command::DiscardPending{7}), success(7, 42));
    EXPECT_EQ(polled(), std::vector<Json>());
    pasteboard().copyFromOutside("b");
    EXPECT_EQ(polled().front(), announcement(43));
}

TEST_F(ClipboardWorkerCommands, answersBeforeItQuits) {
    EXPECT_EQ(replyTo(command::Quit{7}), success(7, 41));
    EXPECT_TRUE(platform.loop.wasToldToStopWaiting());
}

TEST_F(ClipboardWorkerCommands, doesNotStopForAnythingButQuit) {
    static_cast<void>(replyTo(command::Ping{7}));
    static_cast<void>(replyTo(command::Unknown{7}));
    EXPECT_FALSE(platform.loop.wasToldToStopWaiting());
}

TEST_F(ClipboardWorkerCommands, writesATextWithItsMarker) {
    EXPECT_EQ(replyTo(writeText("hi", "marker é")), success(7, 42));
    ASSERT_EQ(pasteboard().items().size(), 1U);
    EXPECT_EQ(pasteboard().items().front().size(), 2U);
    EXPECT_EQ(pasteboard().content(pasteboardType::string), "hi");
    EXPECT_EQ(pasteboard().content(markerType), "marker é");
}

TEST_F(ClipboardWorkerCommands, writesTheTextThenItsMarkerAsOneChange) {
    static_cast<void>(replyTo(writeText("hi")));
    EXPECT_EQ(pasteboard().calls(), Calls{"replaceWithValues text:public.utf8-plain-text "
                                          "text:com.corvelle.tavelbridge.clipboard-origin-v1"});
}

TEST_F(ClipboardWorkerCommands, doesNotReportItsOwnText) {
    static_cast<void>(replyTo(writeText("hi")));
    EXPECT_EQ(polled(), std::vector<Json>());
}

TEST_F(ClipboardWorkerCommands, takesAnEmptyText) {
    EXPECT_EQ(replyTo(writeText("")), success(7, 42));
    EXPECT_EQ(pasteboard().content(pasteboardType::string), "");
}

TEST_F(ClipboardWorkerCommands, refusesATextThatIsNoUtf8) {
    for (const std::string_view text : {"\xFF", "\xED\xA0\x80", "caf\xE9"})
        EXPECT_EQ(replyTo(writeText(text)), failure(7, invalidText, 41)) << text;
    expectUntouched();
}

TEST_F(ClipboardWorkerCommands, refusesATextWithoutItsFields) {
    EXPECT_EQ(replyTo(command::WriteText{7, std::nullopt, "m"}), failure(7, invalidText, 41));
    EXPECT_EQ(replyTo(command::WriteText{7, Bytes::copyOf("hi"), std::nullopt}), failure(7, invalidText, 41));
    expectUntouched();
}

TEST_F(ClipboardWorkerCommands, writesATextOfTheLargestSize) {
    EXPECT_EQ(replyTo(writeText(std::string(4'194'304, 'x'))), success(7, 42));
    EXPECT_EQ(pasteboard().content(pasteboardType::string).value_or("").size(), 4'194'304U);
}

TEST_F(ClipboardWorkerCommands, refusesALargerText) {
    EXPECT_EQ(replyTo(writeText(std::string(4'194'305, 'x'))), failure(7, invalidText, 41));
    expectUntouched();
}

TEST_F(ClipboardWorkerCommands, writesAMarkerOfTheLargestSizeInBytes) {
    std::string marker;
    for (int i = 0; i < 256; ++i)
        marker += "é";
    EXPECT_EQ(replyTo(writeText("hi", marker)), success(7, 42));
    EXPECT_EQ(pasteboard().content(markerType), marker);
    EXPECT_EQ(replyTo(writeText("hi", "")), success(7, 43));
    EXPECT_EQ(pasteboard().content(markerType), "");
}

TEST_F(ClipboardWorkerCommands, refusesALargerMarker) {
    EXPECT_EQ(replyTo(writeText("hi", std::string(513, 'x'))), failure(7, invalidText, 41));
    expectUntouched();
}

TEST_F(ClipboardWorkerCommands, leavesAPasteboardThatRefusedTheTextForThePollToReport) {
    for (const std::string_view refused : {pasteboardType::string, markerType}) {
        pasteboard().refuseNothing();
        pasteboard().copyFromOutside("before");
        static_cast<void>(polled());
        const std::int64_t before = pasteboard().changeCount();
        pasteboard().refuse(Operation::replaceWithValues, refused);
        EXPECT_EQ(replyTo(writeText("hi")), failure(7, textWriteFailed, before + 1)) << refused;
        EXPECT_EQ(polled(), std::vector<Json>{announcement(before + 1)}) << refused;
    }
}

TEST_F(ClipboardWorkerCommands, writesOneItemWithAMarkerForEachFile) {
    const std::string file = platform.scratch.makeFile("a b").string();
    const std::string directory = platform.scratch.path().string();
    EXPECT_EQ(replyTo(writeFiles({file, directory, file})), success(7, 42));
    ASSERT_EQ(pasteboard().items().size(), 3U);
    const std::vector<std::string> urls{platform.fileUrl(file), platform.fileUrl(directory),
                                        platform.fileUrl(file)};
    EXPECT_EQ(urls[1], "file://" + directory + "/#platform");
    for (std::size_t i = 0; i < urls.size(); ++i) {
        const PasteboardItem& item = pasteboard().items()[i];
        ASSERT_EQ(item.size(), 2U);
        EXPECT_EQ(item[0].type, pasteboardType::fileUrl);
        EXPECT_EQ(item[0].data.view(), urls[i]);
        EXPECT_EQ(item[1].type, markerType);
        EXPECT_EQ(item[1].data.view(), "m");
    }
    EXPECT_EQ(pasteboard().calls(), Calls{"replaceWithItems"});
    EXPECT_EQ(polled(), std::vector<Json>());
}

TEST_F(ClipboardWorkerCommands, leavesAPasteboardThatRefusedTheFilesForThePollToReport) {
    pasteboard().refuse(Operation::replaceWithItems);
    EXPECT_EQ(replyTo(writeFiles({"/"})), failure(7, filesWriteFailed, 42));
    EXPECT_EQ(polled(), std::vector<Json>{announcement(42)});
}

TEST_F(ClipboardWorkerCommands, writesTheLargestNumberOfFiles) {
    EXPECT_EQ(replyTo(writeFiles(std::vector<std::string>(10'000, "/"))), success(7, 42));
    EXPECT_EQ(pasteboard().items().size(), 10'000U);
}

TEST_F(ClipboardWorkerCommands, refusesMoreFilesAndNone) {
    EXPECT_EQ(replyTo(writeFiles(std::vector<std::string>(10'001, "/"))), failure(7, invalidFiles, 41));
    EXPECT_EQ(replyTo(writeFiles({})), failure(7, invalidFiles, 41));
    expectUntouched();
}

TEST_F(ClipboardWorkerCommands, refusesPathsThatAreRelativeOrNameNothing) {
    const std::string file = platform.scratch.makeFile("file").string();
    std::filesystem::create_symlink(platform.scratch / "missing", platform.scratch / "dangling");
    for (const std::string& path :
         {std::string(), std::string("."), std::string("etc"), file + "-missing", file + "/",
          (platform.scratch / "dangling").string(), file + '\0', "file://" + file}) {
        EXPECT_EQ(replyTo(writeFiles({path})), failure(7, invalidFiles, 41)) << path;
        EXPECT_EQ(replyTo(writeFiles({"/", path})), failure(7, invalidFiles, 41)) << path;
    }
    expectUntouched();
}

TEST_F(ClipboardWorkerCommands, refusesFilesWithoutAProperMarker) {
    EXPECT_EQ(replyTo(command::WriteFiles{7, "files", {"/"}, std::nullopt, std::nullopt}),
              failure(7, invalidFiles, 41));
    EXPECT_EQ(replyTo(command::WriteFiles{7, "files", {"/"}, std::string(513, 'x'), std::nullopt}),
              failure(7, invalidFiles, 41));
    EXPECT_EQ(replyTo(command::WriteFiles{7, "files", {"/"}, std::string(512, 'x'), std::nullopt}),
              success(7, 42));
}

TEST_F(ClipboardWorkerCommands, refusesFilesOfAnUnknownKind) {
    for (const std::optional<std::string>& kind :
         {std::optional<std::string>(), std::optional<std::string>(""), std::optional<std::string>("Files"),
          std::optional<std::string>("file")})
        EXPECT_EQ(replyTo(command::WriteFiles{7, kind, {"/"}, "m", std::nullopt}),
                  failure(7, "Format clipboard inconnu", 41));
    expectUntouched();
}

TEST_F(ClipboardWorkerCommands, writesFilesOnTheContentThatTheParentExpects) {
    EXPECT_EQ(replyTo(command::WriteFiles{7, "files", {"/"}, "m", 41}), success(7, 42));
}

TEST_F(ClipboardWorkerCommands, refusesFilesWhenTheContentIsAnother) {
    for (const std::uint64_t expected : {std::uint64_t{0}, std::uint64_t{40}, std::uint64_t{42}, UINT64_MAX})
        EXPECT_EQ(replyTo(command::WriteFiles{7, "files", {"/"}, "m", expected}),
                  failure(7, changedDuringTransfer, 41));
    // It is checked first.
    EXPECT_EQ(replyTo(command::WriteFiles{7, std::nullopt, {}, std::nullopt, 40}),
              failure(7, changedDuringTransfer, 41));
    expectUntouched();
}

} // namespace
} // namespace tavel
