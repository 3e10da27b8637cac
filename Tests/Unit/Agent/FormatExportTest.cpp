#include "Tests/Unit/Agent/ExportFixture.h"

namespace tavel {
namespace {

constexpr std::string_view html = "public.html";

/// An export from its start to its publication.
class FormatExporting : public ExportFixture {
protected:
    void copyHtml(std::string_view content = "a") { copy({representation(html, content)}); }

    std::filesystem::path publishedDirectory() {
        EXPECT_EQ(polled(), Events{announcement(pasteboard().changeCount())});
        return std::filesystem::path(pathsIn(finished(), "formats").at(0)).parent_path();
    }

    /// Runs the job, and expects a warning that it could not write.
    void expectWriteFailure(std::string_view domainAndCode) {
        EXPECT_EQ(polled(), Events{announcement(pasteboard().changeCount())});
        EXPECT_EQ(finished(), Events{warning("Presse-papiers : échec de préparation des formats (" +
                                             std::string(domainAndCode) + ").")});
        EXPECT_EQ(polled(), Events());
    }
};

TEST_F(FormatExporting, deletesTheDirectoryPublishedBefore) {
    copyHtml("1");
    const std::filesystem::path first = publishedDirectory();
    copyHtml("2");
    const std::filesystem::path second = publishedDirectory();
    EXPECT_NE(first, second);
    EXPECT_EQ(exported(), Names{second.filename().string()});
}

TEST_F(FormatExporting, leavesThePublishedPictureAlone) {
    copyPng(scriptedPicture(pngSignature, 2, 3));
    EXPECT_EQ(polled(), Events{announcement(42)});
    const std::filesystem::path picture = pathsIn(finished(), "image").at(0);
    copyHtml();
    static_cast<void>(publishedDirectory());
    EXPECT_TRUE(std::filesystem::exists(picture));
}

TEST_F(FormatExporting, comesBackInTheNextTickWhileAnotherExportRuns) {
    copyHtml("1");
    EXPECT_EQ(polled(), Events{announcement(42)});
    copyHtml("2");
    pasteboard().forgetCalls();
    for (int tick = 0; tick < 3; ++tick)
        EXPECT_EQ(polled(), Events{announcement(43)});
    for (const std::string& call : pasteboard().calls())
        EXPECT_NE(call, "data public.html"); // no data is read without the slot
    EXPECT_EQ(platform.loop.heldBackgroundJobs(), 1U);
    EXPECT_EQ(finished(), Events());
    EXPECT_EQ(contentOf(publishedDirectory() / "text.html"), "2");
}

TEST_F(FormatExporting, sharesTheSlotWithPictures) {
    copyPng(scriptedPicture(pngSignature, 2, 3));
    static_cast<void>(polled());
    copyHtml();
    EXPECT_EQ(polled(), Events{announcement(43)});
    EXPECT_EQ(polled(), Events{announcement(43)});
    EXPECT_EQ(finished(), Events());
    static_cast<void>(publishedDirectory());
}

TEST_F(FormatExporting, readsNothingInTheBackground) {
    copyHtml();
    static_cast<void>(polled());
    pasteboard().forgetCalls();
    platform.loop.runBackgroundJobs();
    EXPECT_EQ(pasteboard().calls(), std::vector<std::string>());
    EXPECT_EQ(messages(), Events()); // and sends no message itself
}

TEST_F(FormatExporting, deletesTheDirectoryWhenTheContentHasChanged) {
    copyHtml("1");
    const std::filesystem::path published = publishedDirectory();
    copyHtml("2");
    static_cast<void>(polled());
    pasteboard().copyFromOutside("a");
    EXPECT_EQ(finished(), Events());
    EXPECT_EQ(exported(), Names{published.filename().string()});
}

TEST_F(FormatExporting, deletesTheDirectoryWhenTheParentDiscardedIt) {
    copyHtml();
    static_cast<void>(polled());
    platform.loop.runBackgroundJobs();
    EXPECT_EQ(exported().size(), 1U);
    EXPECT_EQ(replyTo(command::DiscardPending{7}), success(7, 42));
    platform.loop.runPosted();
    EXPECT_EQ(messages(), Events());
    EXPECT_EQ(exported(), Names());
    EXPECT_EQ(polled(), Events());
}

TEST_F(FormatExporting, doesNotExportWhenTheWorkerIsGone) {
    copyHtml();
    static_cast<void>(polled());
    const std::filesystem::path directory = worker->exportDirectory();
    worker.reset();
    platform.loop.runBackgroundJobs();
    EXPECT_EQ(namesIn(directory), Names());
}

TEST_F(FormatExporting, deletesTheDirectoryWhenTheWorkerGoesBeforeItIsPublished) {
    copyHtml();
    static_cast<void>(polled());
    platform.loop.runBackgroundJobs();
    const std::filesystem::path directory = worker->exportDirectory();
    EXPECT_EQ(namesIn(directory).size(), 1U);
    worker.reset();
    platform.loop.runPosted();
    EXPECT_EQ(namesIn(directory), Names());
}

TEST_F(FormatExporting, makesTheExportDirectoryWhenItIsMissing) {
    std::filesystem::remove_all(worker->exportDirectory());
    copyHtml();
    EXPECT_EQ(contentOf(publishedDirectory() / "text.html"), "a");
}

TEST_F(FormatExporting, announcesWhereTheFilesAreWhenALinkTookTheDirectorysPlace) {
    const std::filesystem::path before = worker->exportDirectory();
    std::filesystem::remove_all(before);
    const std::filesystem::path elsewhere = platform.scratch / "elsewhere";
    std::filesystem::create_directory(elsewhere);
    std::filesystem::create_directory_symlink(elsewhere, before);
    copyHtml();
    const std::filesystem::path directory = publishedDirectory();
    EXPECT_EQ(directory.parent_path(), worker->exportDirectory());
    EXPECT_NE(directory.parent_path(), before);
    EXPECT_EQ(contentOf(directory / "text.html"), "a");
    EXPECT_TRUE(std::filesystem::is_empty(elsewhere));
    copyPng(scriptedPicture(pngSignature, 2, 3));
    static_cast<void>(polled());
    const std::filesystem::path picture = pathsIn(finished(), "image").at(0);
    EXPECT_EQ(picture.parent_path(), worker->exportDirectory());
    EXPECT_TRUE(std::filesystem::exists(picture));
}

TEST_F(FormatExporting, warnsWhenTheDirectoryCannotBeMade) {
    // A file in place of the directory.
    std::filesystem::remove_all(worker->exportDirectory());
    writeFile(worker->exportDirectory(), "a");
    copyHtml();
    expectWriteFailure("NSCocoaErrorDomain:512");
    std::filesystem::remove(worker->exportDirectory());
    copyHtml(); // the slot is free again
    EXPECT_EQ(contentOf(publishedDirectory() / "text.html"), "a");
}

TEST_F(FormatExporting, comesBackInTheNextTickWhenThereIsNoThread) {
    copyHtml();
    platform.loop.refuseJobs(1);
    EXPECT_EQ(polled(), Events{announcement(42)});
    EXPECT_FALSE(worker->isExporting());
    EXPECT_EQ(contentOf(publishedDirectory() / "text.html"), "a");
}

TEST_F(FormatExporting, warnsAlsoWhenTheMainLoopHasEnded) {
    std::filesystem::remove_all(worker->exportDirectory());
    writeFile(worker->exportDirectory(), "a");
    copyHtml();
    static_cast<void>(polled());
    platform.loop.runBackgroundJobs(); // and not what it posts
    EXPECT_EQ(messages(),
              Events{warning("Presse-papiers : échec de préparation des formats (NSCocoaErrorDomain:512).")});
}

TEST_F(FormatExporting, makesNothingAfterTheEnd) {
    copyHtml();
    static_cast<void>(polled());
    const std::filesystem::path directory = worker->exportDirectory();
    commands.closeWriter(); // the command reader is one of the jobs
    platform.loop.planPass([this] { worker->stop(); });
    worker->run();
    EXPECT_TRUE(worker->isExporting());
    EXPECT_FALSE(std::filesystem::exists(directory));
    EXPECT_EQ(finished(), Events());
    EXPECT_FALSE(std::filesystem::exists(directory));
    EXPECT_FALSE(worker->isExporting());
}

} // namespace
} // namespace tavel
