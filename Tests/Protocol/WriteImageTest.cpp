#include "Support/Base64.h"
#include "Tests/Protocol/ExportTest.h"
#include "Tests/Protocol/WritingTest.h"

#include <sys/stat.h>

namespace tavel {

namespace {

const std::string invalidHistoryImage = "Image historique invalide";
const std::string invalidImage = "Image clipboard invalide ou trop grande";

class WriteImage : public WritingTest {
protected:
    static Json writeImageData(std::string_view image) {
        std::string base64;
        appendBase64(base64, image);
        return {{"command", "write_image_data"}, {"image_b64", base64}};
    }

    static Json writeImage(const std::vector<std::string>& paths) {
        return {{"command", "write_files"}, {"kind", "image"}, {"paths", paths}, {"marker", "m"}};
    }

    /// A PNG padded with zero bytes; readers ignore what follows its end.
    static std::string pngOfSize(std::size_t bytes) {
        std::string picture = readPicture("png-2-8.png");
        picture.resize(bytes);
        return picture;
    }

    /// The command for such a PNG. The padding is not encoded: zero bytes are the letter A in base64.
    static std::string writeLargeImageData(std::size_t bytes) {
        std::string base64;
        appendBase64(base64, pngOfSize(3 * readPicture("png-2-8.png").size()));
        base64.resize((bytes * 4 + 2) / 3, 'A');
        return R"({"command":"write_image_data","request_id":1,"image_b64":")" + base64 + "\"}\n";
    }

    std::string file(const std::string& name, const std::string& content) const {
        return directory_.createFile(name, content);
    }

    /// The picture on the pasteboard, written to a file.
    std::filesystem::path writtenPicture() {
        const auto content = otherApplication().content();
        EXPECT_EQ(content.size(), 1U);
        EXPECT_EQ(content.at(0).at(0).first, "public.png");
        return directory_.createFile("written.png", content.at(0).at(0).second);
    }
};

TEST_F(WriteImage, writesAPngOfTheHistoryAsItIsAndUnmarked) {
    const std::string picture = readPicture("png-6-16.png");
    expectWritten(writeImageData(picture), {{{"public.png", picture}}});
}

TEST_F(WriteImage, writesEveryOtherPictureOfTheHistoryAsPng) {
    for (const std::string_view name :
         {"jpeg-baseline.jpg", "gif-static.gif", "tiff-LZW.tif", "webp-lossy.webp", "bmp-24.bmp"}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(request(agent(), writeImageData(readPicture(name))).value("ok", false));
        EXPECT_EQ(pngSize(writtenPicture()), "203x149");
        EXPECT_EQ(otherApplication().content().at(0).size(), 1U); // no marker
    }
}

TEST_F(WriteImage, doesNotReportTheHistorysPicture) {
    EXPECT_TRUE(request(agent(), writeImageData(readPicture("png-2-8.png"))).value("ok", false));
    waitForPolls();
    expectSilence(agent());
}

TEST_F(WriteImage, refusesAHistoryPictureThatIsMissingBrokenOrNone) {
    expectRefused({{"command", "write_image_data"}}, invalidHistoryImage);
    expectRefused({{"command", "write_image_data"}, {"image_b64", 7}}, invalidHistoryImage);
    expectRefused({{"command", "write_image_data"}, {"image_b64", "aGk!"}}, invalidHistoryImage);
    expectRefused(writeImageData(""), invalidHistoryImage);
    expectRefused(writeImageData("no picture"), invalidHistoryImage);
    const std::string picture = readPicture("jpeg-baseline.jpg");
    expectRefused(writeImageData(std::string_view(picture).substr(0, picture.size() - 1000)),
                  invalidHistoryImage);
}

TEST_F(WriteImage, refusesDocumentsAndVectorPicturesOfTheHistory) {
    expectRefused(writeImageData("%PDF-1.7\n%%EOF\n"), invalidHistoryImage);
    expectRefused(writeImageData("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"9\" height=\"9\"/>"),
                  invalidHistoryImage);
}

TEST_F(WriteImage, takesAHistoryPictureOf64MebibytesAndNotOneByteMore) {
    agent().send(writeLargeImageData(67'108'864));
    EXPECT_TRUE(agent().nextMessage().value("ok", false));
    EXPECT_TRUE(otherApplication().content().at(0).at(0).second == pngOfSize(67'108'864));
    agent().send(writeLargeImageData(67'108'865));
    EXPECT_EQ(agent().nextMessage().value("reason", ""), invalidHistoryImage);
    EXPECT_EQ(otherApplication().changeCount(), 1);
}

TEST_F(WriteImage, writesAFileAsItIsWithTheMarker) {
    const std::string picture = readPicture("png-6-8.png");
    expectWritten(writeImage({file("a.png", picture)}),
                  {{{"public.png", picture}, {std::string(originMarkerType), "m"}}});
    // The agent does not convert files.
    const std::string photo = readPicture("jpeg-baseline.jpg");
    expectWritten(writeImage({file("a.jpg", photo)}),
                  {{{"public.png", photo}, {std::string(originMarkerType), "m"}}});
}

TEST_F(WriteImage, takesExactlyOneFile) {
    const std::string path = file("a.png", readPicture("png-2-8.png"));
    expectRefused(writeImage({path, path}), invalidImage);
}

TEST_F(WriteImage, refusesAFileThatIsNoPicture) {
    expectRefused(writeImage({file("a.png", "no picture")}), invalidImage);
    expectRefused(writeImage({file("b.png", "")}), invalidImage);
    expectRefused(writeImage({directory_.path()}), invalidImage);
    expectRefused(writeImage({"/dev/zero"}), invalidImage);
}

TEST_F(WriteImage, refusesAFifoWithoutWaitingForItsWriter) {
    const std::string fifo = directory_.path() / "fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    expectRefused(writeImage({fifo}), invalidImage);
}

TEST_F(WriteImage, takesAFileOf128MebibytesAndNotOneByteMore) {
    const std::string path = file("large.png", readPicture("png-2-8.png"));
    std::filesystem::resize_file(path, 134'217'728);
    EXPECT_TRUE(request(agent(), writeImage({path})).value("ok", false));
    EXPECT_EQ(otherApplication().content().at(0).at(0).second.size(), 134'217'728U);
    std::filesystem::resize_file(path, 134'217'729);
    expectRefused(writeImage({path}), invalidImage);
}

TEST_F(WriteImage, letsALocalCopyWin) {
    expectLocalCopyWins(writeImage({file("a.png", readPicture("png-2-8.png"))}));
}

} // namespace

} // namespace tavel
