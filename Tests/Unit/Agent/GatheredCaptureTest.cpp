#include "Platform/FileList.h"
#include "Tests/Unit/Agent/ExportFixture.h"

#include <cstddef>
#include <future>
#include <string>
#include <string_view>

namespace tavel {
namespace {

// The capture of contents that come from their owners, value by value.

constexpr std::string_view pdf = "com.adobe.pdf";
constexpr std::string_view gif = "com.compuserve.gif";
constexpr std::string_view html = "public.html";
constexpr std::string_view text = pasteboardType::string;
constexpr std::string_view url = pasteboardType::fileUrl;
constexpr std::string_view png = pasteboardType::png;

constexpr std::size_t mostBytes = 134'217'728;
constexpr std::size_t mostTextBytes = 4'194'304;

class GatheredCapture : public ExportFixture {
protected:
    GatheredCapture() {
        pasteboard().holdValues();
        pasteboard().watch({{std::string(markerType), maximumMarkerBytes}}, {});
    }

    Names awaited() { return pasteboard().awaited(); }

    /// The oldest gathering ends; returns the messages.
    Events delivered() {
        pasteboard().deliver();
        return messages();
    }

    /// Gathers the one type until the capture goes on.
    void expectAwaited(std::string_view type, std::size_t limit) {
        EXPECT_EQ(awaited(), Names{std::string(type)});
        EXPECT_EQ(pasteboard().gatheredLimitOf(type), limit);
    }

    /// Another program copies rich text, and its capture waits with the export slot.
    void captureHtml() {
        copy({representation(html, "<p>"), representation(text, "a")});
        EXPECT_EQ(polled(), Events{announcement(42)});
        expectAwaited(html, mostTextBytes);
        EXPECT_TRUE(worker->isExporting());
    }

    void expectEnded() {
        EXPECT_EQ(awaited(), Names());
        EXPECT_FALSE(worker->isExporting()) << "the slot is still taken";
        EXPECT_FALSE(isExportHeld());
    }
};

TEST_F(GatheredCapture, announcesWithTheMarkerBeforeAnythingIsGathered) {
    copy({representation(text, "a"), representation(markerType, "m")});
    EXPECT_EQ(polled(), Events{announcement(42, "m")});
    expectAwaited(text, mostTextBytes);
    EXPECT_EQ(polled(), Events());
    EXPECT_EQ(delivered(), Events{textEvent("YQ", 1, 42, "m")});
    EXPECT_EQ(awaited(), Names());
    EXPECT_EQ(polled(), Events());
}

TEST_F(GatheredCapture, gathersNothingBesideFiles) {
    copy({representation(text, "a"), representation(html, "a"), representation(url, "file:///a")});
    EXPECT_EQ(polled(), Events{announcement(42)});
    expectAwaited(url, largestUrlBytes(mostFilesOfAContent));
    EXPECT_EQ(delivered(), Events{pathsEvent("files", {"/a"}, 42)});
    EXPECT_EQ(awaited(), Names());
}

TEST_F(GatheredCapture, gathersOnWhenNoUrlNamesAFile) {
    copy({representation(url, "https://example.org"), representation(text, "a")});
    EXPECT_EQ(polled(), Events{announcement(42)});
    EXPECT_EQ(delivered(), Events());
    expectAwaited(text, mostTextBytes);
}

TEST_F(GatheredCapture, gathersOneFormatAfterTheOtherIntoTheRoomThatIsLeft) {
    copy({representation(text, "a"), representation(html, "<p>"), representation(gif, "no gif"),
          representation(png, pngSignature), representation(pdf, "%PDF-1.7")});
    EXPECT_EQ(polled(), Events{announcement(42)});
    expectAwaited(pdf, mostBytes);
    EXPECT_EQ(delivered(), Events());
    expectAwaited(gif, mostBytes - 8);
    EXPECT_EQ(delivered(), Events());
    expectAwaited(png, mostBytes - 8);
    EXPECT_EQ(delivered(), Events());
    expectAwaited(html, mostTextBytes);
    EXPECT_EQ(delivered(), Events());
    expectAwaited(text, mostTextBytes);
    EXPECT_FALSE(isExportHeld());
    EXPECT_EQ(delivered(), Events());
    EXPECT_EQ(awaited(), Names());
    const auto paths = pathsIn(finished(), "formats");
    EXPECT_EQ(paths.size(), 4U);
    EXPECT_EQ(contentOf(paths.front()), "%PDF-1.7");
}

TEST_F(GatheredCapture, gathersNoMoreOfAFormatThanThereIsRoom) {
    std::string large("%PDF-");
    large.resize(mostBytes - 100, '.');
    copy({{std::string(pdf), Bytes::adopt(std::move(large))}, representation(html, "<p>")});
    EXPECT_EQ(polled(), Events{announcement(42)});
    EXPECT_EQ(delivered(), Events());
    expectAwaited(html, 100);
}

TEST_F(GatheredCapture, gathersAPictureAndNotTheTextBesideIt) {
    copy({representation(png, scriptedPicture(pngSignature, 2, 3)), representation(text, "a")});
    EXPECT_EQ(polled(), Events{announcement(42)});
    expectAwaited(png, mostBytes);
    EXPECT_EQ(delivered(), Events());
    EXPECT_EQ(awaited(), Names());
    EXPECT_EQ(contentOf(pathsIn(finished(), "image").at(0)), scriptedPicture(pngSignature, 2, 3));
}

TEST_F(GatheredCapture, freesTheSlotOfAPictureThatIsNotDelivered) {
    pasteboard().withhold(png);
    copy({representation(png, "x"), representation(text, "a")});
    EXPECT_EQ(polled(), Events{announcement(42)});
    EXPECT_EQ(delivered(), Events());
    expectEnded();
}

TEST_F(GatheredCapture, isEndedByANewContentWhichFindsTheSlotFree) {
    captureHtml();
    copy({representation(pdf, "%PDF-1")});
    EXPECT_EQ(polled(), Events{announcement(43)});
    EXPECT_EQ(awaited(), Names{std::string(pdf)}) << "of the new content only";
    EXPECT_EQ(delivered(), Events());
    EXPECT_EQ(contentOf(pathsIn(finished(), "formats").at(0)), "%PDF-1");
}

TEST_F(GatheredCapture, endsWithoutAWordWhenItsContentWasReplaced) {
    captureHtml();
    pasteboard().copyFromOutside("b");
    EXPECT_EQ(delivered(), Events());
    expectEnded();
    EXPECT_EQ(polled(), Events{announcement(43)});
    EXPECT_EQ(delivered(), Events{textEvent("Yg", 1, 43)});
}

TEST_F(GatheredCapture, isEndedByAWrite) {
    captureHtml();
    EXPECT_EQ(replyTo(command::WriteText{1, Bytes::copyOf("hi"), "m"}), success(1, 43));
    expectEnded();
    EXPECT_EQ(polled(), Events());
}

TEST_F(GatheredCapture, isEndedByAGeneratedFile) {
    captureHtml();
    worker->generatedFilePasted(43);
    expectEnded();
}

TEST_F(GatheredCapture, isForgottenWhenTheParentDiscardsWhatIsPending) {
    captureHtml();
    EXPECT_EQ(replyTo(command::DiscardPending{1}), success(1, 42));
    expectEnded();
    EXPECT_EQ(polled(), Events());
}

TEST_F(GatheredCapture, isEndedByTheStop) {
    captureHtml();
    worker->stop();
    expectEnded();
}

TEST_F(GatheredCapture, letsCommandsBeAnsweredMeanwhile) {
    pasteboard().copyFromOutside("a");
    EXPECT_EQ(polled(), Events{announcement(42)});
    EXPECT_EQ(replyTo(command::Ping{7}), success(7, 42));
    EXPECT_EQ(delivered(), Events{textEvent("YQ", 1, 42)});
}

TEST_F(GatheredCapture, comesBackIfALaterStepFindsTheSlotTaken) {
    copyPng(scriptedPicture(pngSignature, 1, 1));
    EXPECT_EQ(polled(), Events{announcement(42)});
    EXPECT_EQ(delivered(), Events());
    ASSERT_TRUE(isExportHeld());
    copy({representation(url, "https://example.org"), representation(html, "<p>")});
    EXPECT_EQ(polled(), Events{announcement(43)});
    EXPECT_EQ(delivered(), Events());
    EXPECT_EQ(awaited(), Names());
    EXPECT_EQ(polled(), Events{announcement(43)});
}

TEST_F(GatheredCapture, isReportedOnceWhateverTheNewsSaidBefore) {
    pasteboard().holdNews(41);
    pasteboard().copyFromOutside("a");
    EXPECT_EQ(polled(), Events());
    pasteboard().notice();
    EXPECT_EQ(polled(), Events{announcement(42)});
    EXPECT_EQ(delivered(), Events{textEvent("YQ", 1, 42)});
    EXPECT_EQ(polled(), Events());
}

TEST_F(GatheredCapture, passesOverWhatWasThereAtTheStartAndIsNoticedLater) {
    pasteboard().holdNews(-1);
    makeWorker();
    EXPECT_EQ(polled(), Events());
    pasteboard().notice();
    EXPECT_EQ(polled(), Events());
    pasteboard().copyFromOutside("a");
    pasteboard().notice();
    EXPECT_EQ(polled(), Events{announcement(42)});
}

TEST_F(GatheredCapture, passesOverWhatWasDiscardedAndIsNoticedLater) {
    pasteboard().holdNews(41);
    pasteboard().copyFromOutside("a");
    EXPECT_EQ(replyTo(command::DiscardPending{1}), success(1, 42));
    EXPECT_EQ(polled(), Events());
    pasteboard().notice();
    EXPECT_EQ(polled(), Events());
    pasteboard().copyFromOutside("b");
    pasteboard().notice();
    EXPECT_EQ(polled(), Events{announcement(43)});
}

TEST_F(GatheredCapture, countsALaterStepToTheReportThatTheParentHasToTakeFirst) {
    Pipe unread;
    worker = std::make_shared<ClipboardWorker>(
        platform, ClipboardWorker::Pipes{commands.reader(), unread.writer()}, 0, std::nullopt);
    pasteboard().copyFromOutside(std::string(3'000'000, 'a')); // more than the pipe holds
    worker->poll();
    pasteboard().deliver();
    pasteboard().copyFromOutside("b");
    pasteboard().forgetCalls();
    worker->poll();
    EXPECT_EQ(pasteboard().calls(), Names());
    auto rest = std::async(std::launch::async, [&unread] { return unread.drain(); });
    flush();
    worker->poll();
    EXPECT_NE(pasteboard().calls(), Names());
    flush();
    unread.closeWriter();
}

} // namespace
} // namespace tavel
