#include "Support/Uuid.h"
#include "Tests/Support/Permissions.h"
#include "Tests/Support/ReadingLimits.h"
#include "Tests/Unit/Agent/ExportFixture.h"

#include <memory>

namespace tavel {
namespace {

constexpr std::string_view imageWarning = "Image ignorée (limite 128 Mio / 32 mégapixels)";

class ImageCapture : public ExportFixture {
protected:
    static std::string png(std::int64_t width = 2, std::int64_t height = 3) {
        return scriptedPicture(pngSignature, width, height);
    }

    /// Exports the current content; returns the published file.
    std::string publishedFile(std::string_view marker = "") {
        EXPECT_EQ(polled(), Events{announcement(pasteboard().changeCount(), marker)});
        return pathsIn(finished(), "image").at(0);
    }
};

TEST_F(ImageCapture, announcesAPictureAndThenNamesItsFile) {
    copy({representation(pasteboardType::png, png()), representation(markerType, "m\"é")});
    EXPECT_EQ(polled(), Events{announcement(42, "m\"é")});
    const Events events = finished();
    const std::string file = pathsIn(events, "image").at(0);
    EXPECT_EQ(events, Events{pathsEvent("image", {file}, 42, "m\"é")});
    EXPECT_EQ(contentOf(file), png());
    EXPECT_EQ(polled(), Events());
}

TEST_F(ImageCapture, namesTheFileByAUuidInTheExportDirectory) {
    copyPng(png());
    const std::filesystem::path file = publishedFile();
    EXPECT_EQ(file.parent_path(), worker->exportDirectory());
    EXPECT_EQ(file.extension(), ".png");
    EXPECT_TRUE(isUuid(file.stem().string())) << file;
    EXPECT_EQ(modeOf(file), 0600U);
}

TEST_F(ImageCapture, deletesTheFilePublishedBefore) {
    copyPng(png(1, 1));
    const std::string first = publishedFile();
    copyPng(png(2, 2));
    const std::string second = publishedFile();
    EXPECT_NE(first, second);
    EXPECT_EQ(exported(), Names{std::filesystem::path(second).filename().string()});
}

TEST_F(ImageCapture, goesOnWhenTheFilePublishedBeforeIsGone) {
    copyPng(png(1, 1));
    std::filesystem::remove(publishedFile());
    copyPng(png(2, 2));
    EXPECT_EQ(contentOf(publishedFile()), png(2, 2));
}

TEST_F(ImageCapture, prefersAPictureToTheTextBesideIt) {
    copy({representation(pasteboardType::string, "a"), representation(pasteboardType::png, png())});
    EXPECT_EQ(contentOf(publishedFile()), png());
}

TEST_F(ImageCapture, readsNothingInTheBackground) {
    copyPng(png());
    static_cast<void>(polled());
    pasteboard().forgetCalls();
    platform.loop.runBackgroundJobs();
    EXPECT_EQ(pasteboard().calls(), std::vector<std::string>());
}

TEST_F(ImageCapture, publishesFromTheMainLoopOnly) {
    copyPng(png());
    static_cast<void>(polled());
    platform.loop.runBackgroundJobs();
    EXPECT_EQ(messages(), Events());
    platform.loop.runPosted();
    EXPECT_EQ(messages().size(), 1U);
}

TEST_F(ImageCapture, sharesThePasteboardsBufferWithTheJob) {
    const Bytes content = Bytes::adopt(png());
    pasteboard().changeFromOutside({{{std::string(pasteboardType::png), content}}});
    static_cast<void>(polled());
    EXPECT_EQ(pasteboard().data(pasteboardType::png, ample)->data(), content.data());
    EXPECT_EQ(contentOf(pathsIn(finished(), "image").at(0)), png());
}

TEST_F(ImageCapture, warnsOfWhatIsNoPicture) {
    copy({representation(pasteboardType::png, "nonsense"), representation(pasteboardType::string, "a")});
    EXPECT_EQ(polled(), (Events{announcement(42), warning(imageWarning)}));
    EXPECT_FALSE(isExportHeld());
    EXPECT_EQ(polled(), Events());
}

TEST_F(ImageCapture, warnsOfTooManyPixels) {
    copyPng(png(6000, 5333));
    EXPECT_EQ(contentOf(publishedFile()), png(6000, 5333));
    copyPng(png(6000, 5334));
    EXPECT_EQ(polled(), (Events{announcement(43), warning(imageWarning)}));
}

TEST_F(ImageCapture, takesAPictureOfTheLargestByteSize) {
    std::string content = png();
    content.resize(134'217'728, '.');
    pasteboard().changeFromOutside({{{std::string(pasteboardType::png), Bytes::adopt(std::move(content))}}});
    EXPECT_EQ(std::filesystem::file_size(publishedFile()), 134'217'728U);
}

TEST_F(ImageCapture, warnsOfOneByteMore) {
    std::string content = png();
    content.resize(134'217'729, '.');
    pasteboard().changeFromOutside({{{std::string(pasteboardType::png), Bytes::adopt(std::move(content))}}});
    EXPECT_EQ(polled(), (Events{announcement(42), warning(imageWarning)}));
    EXPECT_FALSE(isExportHeld());
}

TEST_F(ImageCapture, saysNothingMoreOfAPictureThatIsNotDelivered) {
    pasteboard().withhold(pasteboardType::png);
    copy({representation(pasteboardType::png, png()), representation(pasteboardType::string, "a")});
    EXPECT_EQ(polled(), Events{announcement(42)});
    EXPECT_FALSE(isExportHeld());
    EXPECT_EQ(polled(), Events()); // not even a retry: the slot is free
}

TEST_F(ImageCapture, takesTheTiffWhenThePngIsNotDelivered) {
    // It lacks the signature of TIFF: otherwise it would be exported as a format.
    pasteboard().withhold(pasteboardType::png);
    copy({representation(pasteboardType::png, png()),
          representation(pasteboardType::tiff, scriptedPicture("other", 4, 5))});
    const Events events = polled();
    ASSERT_EQ(events.size(), 2U); // the announcement, and a warning about the formats
    EXPECT_EQ(contentOf(pathsIn(finished(), "image").at(0)), png(4, 5));
}

TEST_F(ImageCapture, freesTheSlotAfterAWarning) {
    copyPng("nonsense");
    static_cast<void>(polled());
    copyPng(png());
    EXPECT_EQ(contentOf(publishedFile()), png());
}

TEST_F(ImageCapture, saysNothingMoreOfAPictureThatCannotBeConverted) {
    platform.codec.converts = false;
    copyPng(scriptedPicture("jpeg", 2, 3));
    EXPECT_EQ(polled(), Events{announcement(42)});
    EXPECT_EQ(finished(), Events());
    EXPECT_EQ(exported(), Names());
    platform.codec.converts = true;
    copyPng(png());
    EXPECT_EQ(contentOf(publishedFile()), png());
}

TEST_F(ImageCapture, takesAPictureThatBecomesAPngOfTheLargestSize) {
    platform.codec.extraEncodedBytes = 134'217'728 - png().size();
    copyPng(scriptedPicture("jpeg", 2, 3));
    EXPECT_EQ(std::filesystem::file_size(publishedFile()), 134'217'728U);
}

TEST_F(ImageCapture, saysNothingMoreOfAPictureThatBecomesATooLargePng) {
    platform.codec.extraEncodedBytes = 134'217'729 - png().size();
    copyPng(scriptedPicture("jpeg", 2, 3));
    EXPECT_EQ(polled(), Events{announcement(42)});
    EXPECT_EQ(finished(), Events());
    EXPECT_EQ(exported(), Names());
}

TEST_F(ImageCapture, saysNothingMoreWhenTheFileCannotBeWritten) {
    std::filesystem::remove_all(worker->exportDirectory());
    copyPng(png());
    EXPECT_EQ(polled(), Events{announcement(42)});
    EXPECT_EQ(finished(), Events());
    std::filesystem::create_directories(worker->exportDirectory());
    copyPng(png());
    EXPECT_EQ(contentOf(publishedFile()), png());
}

TEST_F(ImageCapture, comesBackInTheNextTickWhileAnotherExportRuns) {
    copyPng(png(1, 1));
    EXPECT_EQ(polled(), Events{announcement(42)});
    copyPng(png(2, 2));
    for (int tick = 0; tick < 3; ++tick)
        EXPECT_EQ(polled(), Events{announcement(43)});
    EXPECT_EQ(platform.loop.heldBackgroundJobs(), 1U);

    EXPECT_EQ(finished(), Events()); // the first is stale by now
    EXPECT_EQ(exported(), Names());
    EXPECT_EQ(contentOf(publishedFile()), png(2, 2));
    EXPECT_EQ(polled(), Events());
}

TEST_F(ImageCapture, comesBackInTheNextTickWhenThereIsNoThread) {
    copyPng(png());
    platform.loop.refuseJobs(2);
    EXPECT_EQ(polled(), Events{announcement(42)});
    EXPECT_FALSE(worker->isExporting());
    EXPECT_EQ(polled(), Events{announcement(42)});
    EXPECT_EQ(contentOf(publishedFile()), png());
}

TEST_F(ImageCapture, publishesNothingAfterQuit) {
    copyPng(png());
    static_cast<void>(polled());
    platform.loop.runBackgroundJobs();
    EXPECT_EQ(replyTo(command::Quit{7}), success(7, 42));
    platform.loop.runPosted();
    EXPECT_EQ(messages(), Events());
    EXPECT_EQ(exported(), Names());
}

TEST_F(ImageCapture, keepsTheSlotUntilTheFileIsWritten) {
    copyPng(png(1, 1));
    EXPECT_EQ(polled(), Events{announcement(42)});
    platform.loop.runBackgroundJobs();
    copyPng(png(2, 2));
    EXPECT_EQ(polled(), Events{announcement(43)});
    EXPECT_TRUE(isExportHeld()); // although the first has not been published yet
}

TEST_F(ImageCapture, deletesTheFileWhenTheContentHasChanged) {
    copyPng(png());
    static_cast<void>(polled());
    pasteboard().copyFromOutside("a");
    EXPECT_EQ(finished(), Events());
    EXPECT_EQ(exported(), Names());
}

TEST_F(ImageCapture, keepsThePublishedFileWhenAnExportIsStale) {
    copyPng(png(1, 1));
    const std::filesystem::path published = publishedFile();
    copyPng(png(2, 2));
    static_cast<void>(polled());
    pasteboard().copyFromOutside("a");
    EXPECT_EQ(finished(), Events());
    EXPECT_EQ(exported(), Names{published.filename().string()});
}

TEST_F(ImageCapture, deletesTheFileWhenTheParentDiscardedIt) {
    copyPng(png());
    static_cast<void>(polled());
    EXPECT_EQ(replyTo(command::DiscardPending{7}), success(7, 42));
    EXPECT_EQ(finished(), Events());
    EXPECT_EQ(exported(), Names());
    EXPECT_EQ(polled(), Events());
}

TEST_F(ImageCapture, deletesTheFileWhenTheParentDiscardedItBetweenWritingAndPublishing) {
    copyPng(png());
    static_cast<void>(polled());
    platform.loop.runBackgroundJobs();
    EXPECT_EQ(exported().size(), 1U);
    static_cast<void>(replyTo(command::DiscardPending{7}));
    platform.loop.runPosted();
    EXPECT_EQ(messages(), Events());
    EXPECT_EQ(exported(), Names());
}

TEST_F(ImageCapture, deletesTheFileWhenTheParentWroteMeanwhile) {
    copyPng(png());
    static_cast<void>(polled());
    EXPECT_EQ(replyTo(command::WriteText{7, Bytes::copyOf("hi"), "m"}), success(7, 43));
    EXPECT_EQ(finished(), Events());
    EXPECT_EQ(exported(), Names());
}

TEST_F(ImageCapture, doesNotExportWhenTheWorkerIsGone) {
    copyPng(png());
    static_cast<void>(polled());
    const std::filesystem::path directory = worker->exportDirectory();
    worker.reset();
    platform.loop.runBackgroundJobs();
    EXPECT_EQ(namesIn(directory), Names());
}

TEST_F(ImageCapture, leavesTheFileWhenTheWorkerGoesBeforeItIsPublished) {
    copyPng(png());
    static_cast<void>(polled());
    platform.loop.runBackgroundJobs();
    const std::filesystem::path directory = worker->exportDirectory();
    worker.reset();
    platform.loop.runPosted();
    EXPECT_EQ(namesIn(directory).size(), 1U);
}

TEST_F(ImageCapture, doesNotKeepTheWorkerAlive) {
    copyPng(png());
    static_cast<void>(polled());
    const std::weak_ptr<ClipboardWorker> observed = worker;
    worker.reset();
    EXPECT_TRUE(observed.expired());
}

} // namespace
} // namespace tavel
