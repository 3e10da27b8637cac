#include "Tests/Protocol/ExportTest.h"

namespace tavel {

namespace {

namespace fs = std::filesystem;

const std::string imageWarning = "Image ignor\u00E9e (limite 128 Mio / 32 m\u00E9gapixels)";

class CaptureImage : public ExportTest {
protected:
    static Representation png(std::string_view content) { return representation("public.png", content); }

    fs::path fileOf(const std::vector<Representation>& item) { return exportOf("image", item).at(0); }

    /// Whether the agent has loaded the image library.
    bool hasLoadedImageLibrary() {
        return contentOf("/proc/" + std::to_string(agent().processIdentifier()) + "/maps").find("libvips") !=
               std::string::npos;
    }
};

TEST_F(CaptureImage, namesAFileWithThePictureInTheExportDirectory) {
    const std::string picture = readPicture("png-6-8.png");
    const fs::path file = fileOf({png(picture)});
    EXPECT_TRUE(contentOf(file) == picture);
    EXPECT_EQ(file.parent_path(), exportDirectory());
    EXPECT_EQ(file.extension(), ".png");
    EXPECT_EQ(file.stem().string().size(), 36U);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0600));
    EXPECT_EQ(fs::status(file.parent_path()).permissions(), fs::perms(0700));
}

TEST_F(CaptureImage, reportsTheMarkerWithThePicture) {
    const std::int64_t sequence =
        copy({png(readPicture("png-2-8.png")), representation(originMarkerType, "m")});
    EXPECT_EQ(agent().nextMessage(), announcement(sequence, "m"));
    const Json event = agent().nextMessage();
    EXPECT_EQ(event.at("kind"), "image");
    EXPECT_EQ(event.at("marker"), "m");
}

TEST_F(CaptureImage, keepsOnlyTheFileOfTheLastPicture) {
    const fs::path first = fileOf({png(readPicture("png-2-8.png"))});
    const fs::path second = fileOf({png(readPicture("png-6-8.png"))});
    EXPECT_EQ(namesIn(exportDirectory()), std::vector<std::string>{second.filename().string()});
    expectNextCopyReported();
    EXPECT_TRUE(fs::exists(second)); // the parent may still be reading it
}

TEST_F(CaptureImage, convertsAPictureThatOnlyPassesForPng) {
    EXPECT_EQ(pngSize(fileOf({png(readPicture("jpeg-baseline.jpg"))})), "203x149");
}

TEST_F(CaptureImage, sendsThePictureAndNotTheTextBesideIt) {
    const std::string picture = readPicture("png-2-8.png");
    EXPECT_TRUE(contentOf(fileOf({representation("public.utf8-plain-text", "a"), png(picture)})) == picture);
    expectNextCopyReported();
}

TEST_F(CaptureImage, warnsOfWhatIsNoPictureAndKeepsTheTextBack) {
    expectWarning({png("no picture"), representation("public.utf8-plain-text", "a")}, imageWarning);
    expectWarning({png("")}, imageWarning);
    expectWarning({png("%PDF-1.7")}, imageWarning);
    expectWarning({png("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"1\" height=\"1\"/>")},
                  imageWarning);
}

TEST_F(CaptureImage, warnsOfAPictureThatClaimsTooManyPixels) {
    // Width, height, five bytes of layout, and their checksum.
    const std::string claim("\0\0\xEA\x60\0\0\xEA\x60\x08\x02\0\0\0\x0F\xB0\xE2\x15", 17);
    expectWarning({png(readPicture("png-2-8.png").replace(16, claim.size(), claim))}, imageWarning);
}

TEST_F(CaptureImage, warnsOfMoreThan128Mebibytes) {
    std::string picture = readPicture("png-2-8.png");
    picture.resize(134'217'729);
    expectWarning({png(picture)}, imageWarning);
}

TEST_F(CaptureImage, saysNothingMoreOfAPictureThatBreaksOff) {
    const std::string picture = readPicture("jpeg-baseline.jpg");
    expectAnnouncedOnly({png(std::string_view(picture).substr(0, picture.size() / 2))});
    EXPECT_EQ(namesIn(exportDirectory()), std::vector<std::string>());
}

TEST_F(CaptureImage, saysNothingMoreWhenTheFileCannotBeWritten) {
    agent();
    fs::remove(exportDirectory());
    expectAnnouncedOnly({png(readPicture("png-2-8.png"))});
}

TEST_F(CaptureImage, doesNotReportThePictureThatTheParentWroteBack) {
    const fs::path file = fileOf({png(readPicture("png-2-8.png"))});
    const std::int64_t before = otherApplication().changeCount();
    EXPECT_EQ(
        request(agent(),
                {{"command", "write_files"}, {"kind", "image"}, {"paths", {file.string()}}, {"marker", "m"}}),
        success(before + 1));
    expectNextCopyReported();
}

TEST_F(CaptureImage, loadsNoImageLibraryIntoTheAgent) {
    static_cast<void>(fileOf({png(readPicture("jpeg-baseline.jpg"))})); // converted
    EXPECT_FALSE(hasLoadedImageLibrary());
}

} // namespace

} // namespace tavel
