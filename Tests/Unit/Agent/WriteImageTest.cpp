#include "Tests/Unit/Agent/ExportFixture.h"

namespace tavel {
namespace {

using Operation = ScriptedPasteboard::Operation;
using Calls = std::vector<std::string>;

constexpr std::string_view invalidHistoryImage = "Image historique invalide";
constexpr std::string_view invalidImage = "Image clipboard invalide ou trop grande";
constexpr std::string_view imageWriteFailed = "Écriture image impossible";
constexpr std::string_view changedDuringTransfer = "Le presse-papiers local a changé pendant le transfert";

std::string png(std::int64_t width = 2, std::int64_t height = 3) {
    return scriptedPicture(pngSignature, width, height);
}

command::WriteImageData writeImageData(std::string_view image) {
    return {7, Bytes::copyOf(image)};
}

class WriteImage : public ExportFixture {
protected:
    void expectUntouched() {
        for (const std::string& call : pasteboard().calls())
            EXPECT_EQ(call.find("replace"), std::string::npos);
        EXPECT_EQ(pasteboard().changeCount(), 41);
    }

    /// Writes a file with that content, padded to `size` bytes if that is more.
    std::string makeFile(std::string_view content, std::uintmax_t size = 0) const {
        const std::filesystem::path file = platform.scratch / "picture";
        writeFile(file, content);
        if (size > content.size())
            std::filesystem::resize_file(file, size);
        return file.string();
    }

    static command::WriteFiles writeImage(std::vector<std::string> paths,
                                          std::optional<std::uint64_t> expected = std::nullopt) {
        return {7, "image", std::move(paths), "m", expected};
    }
};

TEST_F(WriteImage, writesAPngFromTheHistoryAsItIsAndWithoutAMarker) {
    EXPECT_EQ(replyTo(writeImageData(png())), success(7, 42));
    ASSERT_EQ(pasteboard().items().size(), 1U);
    EXPECT_EQ(pasteboard().items().front().size(), 1U);
    EXPECT_EQ(pasteboard().content(pasteboardType::png), png());
    EXPECT_EQ(pasteboard().calls(), Calls{"replaceWithValues data:public.png"});
    EXPECT_EQ(polled(), Events());
}

TEST_F(WriteImage, convertsAnotherFormatFromTheHistoryToPng) {
    EXPECT_EQ(replyTo(writeImageData(scriptedPicture("\xFF\xD8\xFF", 4, 5))), success(7, 42));
    EXPECT_EQ(pasteboard().content(pasteboardType::png), png(4, 5));
}

TEST_F(WriteImage, refusesAHistoryPictureThatIsMissingOrEmpty) {
    EXPECT_EQ(replyTo(command::WriteImageData{7, std::nullopt}), failure(7, invalidHistoryImage, 41));
    EXPECT_EQ(replyTo(writeImageData("")), failure(7, invalidHistoryImage, 41));
    expectUntouched();
}

TEST_F(WriteImage, refusesAHistoryPictureThatIsNone) {
    EXPECT_EQ(replyTo(writeImageData("nonsense")), failure(7, invalidHistoryImage, 41));
    EXPECT_EQ(replyTo(writeImageData(png(6000, 5334))), failure(7, invalidHistoryImage, 41));
    platform.codec.converts = false;
    EXPECT_EQ(replyTo(writeImageData(scriptedPicture("jpeg", 2, 3))), failure(7, invalidHistoryImage, 41));
    expectUntouched();
}

TEST_F(WriteImage, takesAHistoryPictureOf64Mebibytes) {
    std::string image = png();
    image.resize(67'108'864, '.');
    EXPECT_EQ(replyTo(writeImageData(image)), success(7, 42));
    EXPECT_EQ(pasteboard().items().front().front().data.size(), 67'108'864U);
}

TEST_F(WriteImage, refusesAHistoryPictureOfOneByteMoreWithoutLookingAtIt) {
    std::string image = scriptedPicture("jpeg", 2, 3);
    image.resize(67'108'865, '.');
    EXPECT_EQ(replyTo(writeImageData(image)), failure(7, invalidHistoryImage, 41));
    EXPECT_TRUE(platform.codec.converted.empty());
    expectUntouched();
}

TEST_F(WriteImage, leavesAPasteboardThatRefusedTheHistorysPictureForThePollToReport) {
    pasteboard().refuse(Operation::replaceWithValues, pasteboardType::png);
    EXPECT_EQ(replyTo(writeImageData(png())), failure(7, imageWriteFailed, 42));
    EXPECT_EQ(polled(), Events{announcement(42)});
}

TEST_F(WriteImage, writesAFilesBytesAsTheyAreWithAMarker) {
    for (const std::string& content : {png(), scriptedPicture("jpeg", 2, 3)}) {
        const std::int64_t before = pasteboard().changeCount();
        EXPECT_EQ(replyTo(writeImage({makeFile(content)})), success(7, before + 1));
        ASSERT_EQ(pasteboard().items().size(), 1U);
        EXPECT_EQ(pasteboard().content(pasteboardType::png), content);
        EXPECT_EQ(pasteboard().content(markerType), "m");
    }
    EXPECT_TRUE(platform.codec.converted.empty());
    EXPECT_EQ(polled(), Events());
}

TEST_F(WriteImage, writesThePictureThenItsMarkerAsOneChange) {
    static_cast<void>(replyTo(writeImage({makeFile(png())})));
    EXPECT_EQ(pasteboard().calls(), Calls{"replaceWithValues data:public.png "
                                          "text:com.corvelle.tavelbridge.clipboard-origin-v1"});
}

TEST_F(WriteImage, followsALinkToThePicture) {
    const std::filesystem::path link = platform.scratch / "link";
    std::filesystem::create_symlink(makeFile(png()), link);
    EXPECT_EQ(replyTo(writeImage({link.string()})), success(7, 42));
}

TEST_F(WriteImage, takesExactlyOneFile) {
    const std::string file = makeFile(png());
    EXPECT_EQ(replyTo(writeImage({file, file})), failure(7, invalidImage, 41));
    expectUntouched();
}

TEST_F(WriteImage, refusesAFileThatIsNoPicture) {
    EXPECT_EQ(replyTo(writeImage({makeFile("nonsense")})), failure(7, invalidImage, 41));
    EXPECT_EQ(replyTo(writeImage({makeFile("")})), failure(7, invalidImage, 41));
    EXPECT_EQ(replyTo(writeImage({makeFile(png(6000, 5334))})), failure(7, invalidImage, 41));
    EXPECT_EQ(replyTo(writeImage({"/"})), failure(7, invalidImage, 41));
    EXPECT_EQ(replyTo(writeImage({"/dev/null"})), failure(7, invalidImage, 41));
    expectUntouched();
}

TEST_F(WriteImage, takesAFileOf128Mebibytes) {
    EXPECT_EQ(replyTo(writeImage({makeFile(png(), 134'217'728)})), success(7, 42));
    EXPECT_EQ(pasteboard().items().front().front().data.size(), 134'217'728U);
}

TEST_F(WriteImage, refusesAFileOfOneByteMore) {
    EXPECT_EQ(replyTo(writeImage({makeFile(png(), 134'217'729)})), failure(7, invalidImage, 41));
    expectUntouched();
}

TEST_F(WriteImage, comparesTheContentAgainAfterThePictureWasRead) {
    const std::string file = makeFile(png());
    EXPECT_EQ(replyTo(writeImage({file}, 41)), success(7, 42));
    int readings = 0;
    pasteboard().onCountRead([&] {
        if (++readings == 1) // somebody copies while the picture is read
            pasteboard().copyFromOutside("a");
    });
    EXPECT_EQ(replyTo(writeImage({file}, 42)), failure(7, changedDuringTransfer, 43));
    EXPECT_EQ(pasteboard().content(pasteboardType::string), "a");
}

TEST_F(WriteImage, winsOverACopyThatTheParentDoesNotAskAbout) {
    const std::string file = makeFile(png());
    pasteboard().copyFromOutside("a");
    EXPECT_EQ(replyTo(writeImage({file})), success(7, 43));
    EXPECT_EQ(pasteboard().content(pasteboardType::png), png());
}

TEST_F(WriteImage, leavesAPasteboardThatRefusedThePictureOrItsMarkerForThePollToReport) {
    const std::string file = makeFile(png());
    pasteboard().refuse(Operation::replaceWithValues, pasteboardType::png);
    EXPECT_EQ(replyTo(writeImage({file})), failure(7, imageWriteFailed, 42));
    EXPECT_EQ(polled(), Events{announcement(42)});
    pasteboard().refuseNothing();
    pasteboard().refuse(Operation::replaceWithValues, markerType);
    EXPECT_EQ(replyTo(writeImage({file})), failure(7, imageWriteFailed, 43));
    EXPECT_EQ(polled().front(), announcement(43));
}

} // namespace
} // namespace tavel
