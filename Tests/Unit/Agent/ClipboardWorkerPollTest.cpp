#include "Platform/PasteboardTypes.h"
#include "TavelClipboardAgent/Messages.h"
#include "TavelClipboardAgent/main/Limits.h"
#include "Tests/Unit/Agent/WorkerFixture.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {
namespace {

class ClipboardWorkerPoll : public WorkerFixture {
protected:
    ClipboardWorkerPoll() { makeWorker(); }

    static Json filesEvent(const std::vector<std::string>& paths, std::int64_t sequence,
                           std::string_view marker = "") {
        return pathsEvent("files", paths, sequence, marker);
    }
};

using Events = std::vector<nlohmann::json>;

TEST_F(ClipboardWorkerPoll, saysNothingOfWhatWasThereAtTheStart) {
    EXPECT_EQ(polled(), Events());
    EXPECT_EQ(polled(), Events());
}

TEST_F(ClipboardWorkerPoll, doesNotLookAtAnUnchangedPasteboard) {
    pasteboard().copyFromOutside("a");
    static_cast<void>(polled());
    pasteboard().forgetCalls();
    EXPECT_EQ(polled(), Events());
    EXPECT_EQ(pasteboard().calls(), std::vector<std::string>());
}

TEST_F(ClipboardWorkerPoll, reportsEachChangeOnce) {
    pasteboard().copyFromOutside("a");
    EXPECT_EQ(polled(), (Events{announcement(42), textEvent("YQ", 1, 42)}));
    EXPECT_EQ(polled(), Events());
    pasteboard().copyFromOutside("ab");
    EXPECT_EQ(polled(), (Events{announcement(43), textEvent("YWI", 2, 43)}));
}

TEST_F(ClipboardWorkerPoll, reportsOnlyTheLastOfSeveralChanges) {
    pasteboard().copyFromOutside("a");
    pasteboard().copyFromOutside("b");
    EXPECT_EQ(polled(), (Events{announcement(43), textEvent("Yg", 1, 43)}));
}

TEST_F(ClipboardWorkerPoll, announcesAChangeBeforeItLooksAtTheContent) {
    Events announced;
    pasteboard().copyFromOutside("a");
    pasteboard().onCall([&](const std::string& call) {
        if (call == "files")
            announced = messages();
    });
    const Events after = polled();
    EXPECT_EQ(announced, Events{announcement(42)});
    EXPECT_EQ(after, (Events{textEvent("YQ", 1, 42)}));
}

TEST_F(ClipboardWorkerPoll, onlyAnnouncesWhatItCannotRead) {
    pasteboard().changeFromOutside({{representation("com.example.private", "secret")}});
    EXPECT_EQ(polled(), Events{announcement(42)});
    pasteboard().changeFromOutside({});
    EXPECT_EQ(polled(), Events{announcement(43)});
}

TEST_F(ClipboardWorkerPoll, reportsTheMarkerWithEveryEvent) {
    pasteboard().changeFromOutside(
        {{representation(pasteboardType::string, "a"), representation(markerType, "m\"é")}});
    EXPECT_EQ(polled(), (Events{announcement(42, "m\"é"), textEvent("YQ", 1, 42, "m\"é")}));
    pasteboard().changeFromOutside(
        {{representation(pasteboardType::fileUrl, "file:///a"), representation(markerType, "n")}});
    EXPECT_EQ(polled(), (Events{announcement(43, "n"), filesEvent({"/a"}, 43, "n")}));
}

TEST_F(ClipboardWorkerPoll, reportsFilesInTheOrderOfTheItems) {
    pasteboard().copyFilesFromOutside(std::vector<std::string>{"/b", "/a b", "/é", "/b"});
    EXPECT_EQ(polled(), (Events{announcement(42), filesEvent({"/b", "/a b", "/é", "/b"}, 42)}));
}

TEST_F(ClipboardWorkerPoll, prefersFilesToTheTextBesideThem) {
    pasteboard().changeFromOutside({{representation(pasteboardType::string, "a.txt"),
                                     representation(pasteboardType::fileUrl, "file:///a.txt")}});
    EXPECT_EQ(polled(), (Events{announcement(42), filesEvent({"/a.txt"}, 42)}));
}

TEST_F(ClipboardWorkerPoll, readsOnWhenNoUrlNamesAFile) {
    pasteboard().changeFromOutside({{representation(pasteboardType::fileUrl, "https://example.org"),
                                     representation(pasteboardType::string, "a")}});
    EXPECT_EQ(polled(), (Events{announcement(42), textEvent("YQ", 1, 42)}));
}

TEST_F(ClipboardWorkerPoll, neverReplacesAPictureByTheTextBesideIt) {
    for (const std::string_view type : {pasteboardType::png, pasteboardType::tiff}) {
        pasteboard().changeFromOutside(
            {{representation(type, "x"), representation(pasteboardType::string, "a")}});
        for (const Json& event : polled())
            EXPECT_FALSE(event.contains("text_b64")) << type;
    }
}

TEST_F(ClipboardWorkerPoll, reportsAnEmptyText) {
    pasteboard().copyFromOutside("");
    EXPECT_EQ(polled(), (Events{announcement(42), textEvent("", 0, 42)}));
}

TEST_F(ClipboardWorkerPoll, countsTheBytesOfATextAndNotItsCharacters) {
    pasteboard().copyFromOutside("é😀");
    EXPECT_EQ(polled(), (Events{announcement(42), textEvent("w6nwn5iA", 6, 42)}));
}

TEST_F(ClipboardWorkerPoll, saysNothingMoreOfATextThatIsNotUtf8) {
    pasteboard().copyFromOutside("caf\xE9");
    EXPECT_EQ(polled(), Events{announcement(42)});
}

TEST_F(ClipboardWorkerPoll, reportsATextOfTheLargestSize) {
    pasteboard().copyFromOutside(std::string(4'194'304, 'x'));
    const Events events = polled();
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0], announcement(42));
    EXPECT_EQ(events[1].at("bytes"), 4'194'304);
    EXPECT_EQ(events[1].at("text_b64").get<std::string>().size(), 5'592'406U);
}

TEST_F(ClipboardWorkerPoll, warnsOfALargerText) {
    pasteboard().copyFromOutside(std::string(4'194'305, 'x'));
    EXPECT_EQ(polled(), (Events{announcement(42), warning("Texte presse-papiers ignoré (>4 Mio)")}));
    EXPECT_EQ(polled(), Events());
}

constexpr std::string_view selectionWarning =
    "Sélection de fichiers trop grande (10 000 éléments / 2 Mio de chemins)";

TEST_F(ClipboardWorkerPoll, reportsTheLargestNumberOfFiles) {
    const std::vector<std::string> paths(10'000, "/a");
    pasteboard().copyFilesFromOutside(paths);
    EXPECT_TRUE(polled() == (Events{announcement(42), filesEvent(paths, 42)}));
}

TEST_F(ClipboardWorkerPoll, warnsOfMoreFiles) {
    pasteboard().copyFilesFromOutside(std::vector<std::string>(10'001, "/a"));
    EXPECT_EQ(polled(), (Events{announcement(42), warning(selectionWarning)}));
    EXPECT_EQ(polled(), Events());
}

/// Paths of 4,096 bytes each, 2 MiB in total; every other one has letters of two bytes.
std::vector<std::string> twoMebibytesOfPaths() {
    std::string letters = "/x";
    for (int i = 0; i < 2047; ++i)
        letters += "é";
    std::vector<std::string> paths;
    for (int i = 0; i < 256; ++i) {
        paths.push_back("/" + std::string(4095, 'a'));
        paths.push_back(letters);
    }
    return paths;
}

TEST_F(ClipboardWorkerPoll, reportsTheLargestPaths) {
    const std::vector<std::string> paths = twoMebibytesOfPaths();
    pasteboard().copyFilesFromOutside(paths);
    EXPECT_TRUE(polled() == (Events{announcement(42), filesEvent(paths, 42)}));
}

TEST_F(ClipboardWorkerPoll, warnsOfPathsOneByteLonger) {
    std::vector<std::string> paths = twoMebibytesOfPaths();
    paths.front() += 'a';
    pasteboard().copyFilesFromOutside(paths);
    EXPECT_EQ(polled(), (Events{announcement(42), warning(selectionWarning)}));
}

TEST_F(ClipboardWorkerPoll, looksForNothingElseInASelectionThatIsTooLarge) {
    std::vector<PasteboardItem> items(10'001, {representation(pasteboardType::fileUrl, "file:///a")});
    items.front().push_back(representation(pasteboardType::string, "text"));
    pasteboard().changeFromOutside(std::move(items));
    EXPECT_EQ(polled(), (Events{announcement(42), warning(selectionWarning)}));
}

TEST_F(ClipboardWorkerPoll, takesAMarkerUpToItsLimitAndALongerOneForNone) {
    const std::string longest(maximumMarkerBytes, 'm');
    const auto copyMarked = [this](const std::string& marker) {
        pasteboard().changeFromOutside(
            {{representation(pasteboardType::string, "a"), representation(markerType, marker)}});
    };
    copyMarked(longest);
    EXPECT_EQ(polled(), (Events{announcement(42, longest), textEvent("YQ", 1, 42, longest)}));
    copyMarked(longest + "m");
    EXPECT_EQ(polled(), (Events{announcement(43), textEvent("YQ", 1, 43)}));
}

TEST_F(ClipboardWorkerPoll, readsNoMoreOfEachTypeThanItPassesOn) {
    pasteboard().changeFromOutside(
        {{representation(pasteboardType::string, "a"), representation(markerType, "m")}});
    static_cast<void>(polled());
    EXPECT_EQ(pasteboard().limitOf(markerType), 512U);
    EXPECT_EQ(pasteboard().limitOf(pasteboardType::string), 4'194'304U);

    pasteboard().changeFromOutside({{representation(pasteboardType::tiff, "no picture")}});
    static_cast<void>(polled());
    EXPECT_EQ(pasteboard().limitOf(pasteboardType::tiff), 134'217'728U);

    pasteboard().changeFromOutside({{representation("public.html", "<p>"), representation("public.png", "p"),
                                     representation(pasteboardType::string, "a")}});
    static_cast<void>(polled());
    EXPECT_EQ(pasteboard().limitOf("public.html"), 4'194'304U);
    EXPECT_EQ(pasteboard().limitOf(pasteboardType::string), 4'194'304U);
    EXPECT_EQ(pasteboard().limitOf(pasteboardType::png), 134'217'728U);
}

TEST_F(ClipboardWorkerPoll, asksForTheTypesOnceAndOnlyForStringsThatAreOffered) {
    using Calls = std::vector<std::string>;
    pasteboard().copyFromOutside("a");
    static_cast<void>(polled());
    EXPECT_EQ(pasteboard().calls(), (Calls{"types", "files", "string public.utf8-plain-text"}));

    pasteboard().changeFromOutside({{representation(markerType, "m")}});
    pasteboard().forgetCalls();
    static_cast<void>(polled());
    EXPECT_EQ(pasteboard().calls(),
              (Calls{"types", "string com.corvelle.tavelbridge.clipboard-origin-v1", "files"}));
}

TEST_F(ClipboardWorkerPoll, reportsAChangeThatHappensWhileItReads) {
    pasteboard().copyFromOutside("a");
    bool changed = false;
    pasteboard().onCall([&](const std::string& call) {
        if (call == "files" && !std::exchange(changed, true))
            pasteboard().copyFromOutside("b");
    });
    static_cast<void>(polled());
    EXPECT_EQ(polled(), (Events{announcement(43), textEvent("Yg", 1, 43)}));
}

TEST_F(ClipboardWorkerPoll, tellsOfAGeneratedFileAndNotOfItsChange) {
    pasteboard().copyFromOutside("a"); // as publishing a file changes it
    worker->generatedFilePasted(42);
    EXPECT_EQ(messages(), (Events{Json{{"event", "file_renamed"}, {"sequence", 42}}}));
    EXPECT_EQ(polled(), Events());
    pasteboard().copyFromOutside("b");
    EXPECT_EQ(polled(), (Events{announcement(43), textEvent("Yg", 1, 43)}));
}

TEST_F(ClipboardWorkerPoll, stopsAtOnceForAParentThatIsNotItsOwn) {
    makeWorker(getpid());
    pasteboard().copyFromOutside("a");
    EXPECT_EQ(polled(), Events());
    EXPECT_EQ(pasteboard().calls(), std::vector<std::string>());
    EXPECT_TRUE(platform.loop.wasToldToStopWaiting());
}

TEST_F(ClipboardWorkerPoll, goesOnForItsOwnParentAndWithoutAWatch) {
    std::int64_t sequence = 41;
    for (const std::int32_t parent : {getppid(), 0, 1, -1, -7}) {
        makeWorker(parent);
        pasteboard().copyFromOutside("a");
        ++sequence;
        EXPECT_EQ(polled(), (Events{announcement(sequence), textEvent("YQ", 1, sequence)})) << parent;
        EXPECT_FALSE(platform.loop.wasToldToStopWaiting()) << parent;
    }
}

using ClipboardWorkerDeathTest = ClipboardWorkerPoll;

TEST_F(ClipboardWorkerDeathTest, abortsAtANegativeChangeCount) {
    pasteboard().setChangeCount(-1);
    EXPECT_EXIT(worker->poll(), testing::KilledBySignal(SIGABRT), "");
    EXPECT_EXIT(worker->handle(command::Ping{7}), testing::KilledBySignal(SIGABRT), "");
    EXPECT_EQ(messages(), Events());
}

} // namespace
} // namespace tavel
