#include "Tests/Protocol/ExportTest.h"
#include "Tests/Protocol/WritingTest.h"

#include <sys/stat.h>

namespace tavel {

namespace {

const std::string invalidFormats = "Formats clipboard invalides";

class WriteFormats : public WritingTest {
protected:
    static Json writeFormats(const std::vector<std::string>& paths) {
        return {{"command", "write_files"}, {"kind", "formats"}, {"paths", paths}, {"marker", "m"}};
    }

    std::string file(const std::string& name, const std::string& content) const {
        return directory_.createFile(name, content);
    }
};

TEST_F(WriteFormats, writesAllTenFormatsAsOneItemInTheOrderOfThePaths) {
    const std::string gif = readPicture("gif-static.gif");
    const std::string webp = readPicture("webp-lossy.webp");
    const std::string tiff = readPicture("tiff-LZW.tif");
    const std::string jpeg = readPicture("jpeg-baseline.jpg");
    const std::string png = readPicture("png-2-8.png");
    expectWritten(
        writeFormats({file("text.txt", "\u00E9"), file("text.html", "<b>\u00E9</b>"),
                      file("text.rtf", "{\\rtf1}"), file("image.png", png), file("image.jpeg", jpeg),
                      file("image.tiff", tiff), file("image.webp", webp), file("image.svg", "<svg/>"),
                      file("image.gif", gif), file("document.pdf", "%PDF-1.7")}),
        {{{"public.utf8-plain-text", "\u00E9"},
          {"public.html", "\xEF\xBB\xBF<b>\u00E9</b>"},
          {"public.rtf", "{\\rtf1}"},
          {"public.png", png},
          {"public.jpeg", jpeg},
          {"public.tiff", tiff},
          {"org.webmproject.webp", webp},
          {"public.svg-image", "<svg/>"},
          {"com.compuserve.gif", gif},
          {"com.adobe.pdf", "%PDF-1.7"},
          {std::string(originMarkerType), "m"}}});
    waitForPolls();
    expectSilence(agent());
}

TEST_F(WriteFormats, refusesFilesWithAnotherNameOrTheSameNameTwice) {
    expectRefused(writeFormats({file("text.htm", "a")}), invalidFormats);
    expectRefused(writeFormats({file("Image.png", readPicture("png-2-8.png"))}), invalidFormats);
    expectRefused(writeFormats({file("a/text.html", "a"), file("b/text.html", "a")}), invalidFormats);
}

TEST_F(WriteFormats, refusesContentThatIsNotWhatTheNameSays) {
    for (const auto& [name, content] :
         std::vector<std::pair<std::string, std::string>>{{"document.pdf", "no pdf"},
                                                          {"image.gif", "no gif"},
                                                          {"image.svg", "<SVG/>"},
                                                          {"image.webp", "RIFF....WEB"},
                                                          {"image.tiff", "no tiff"},
                                                          {"image.jpeg", "no jpeg"},
                                                          {"image.png", "no png"},
                                                          {"text.rtf", "{\\RTF1}"},
                                                          {"text.html", "\xFF"},
                                                          {"text.txt", std::string("a\0b", 3)},
                                                          {"text.txt", ""}})
        expectRefused(writeFormats({file(name, content)}), invalidFormats);
}

TEST_F(WriteFormats, refusesWhatIsNoRegularFile) {
    std::filesystem::create_directory(directory_.path() / "image.png");
    expectRefused(writeFormats({directory_.path() / "image.png"}), invalidFormats);
    std::filesystem::create_symlink(file("real", "a"), directory_.path() / "text.txt");
    expectRefused(writeFormats({directory_.path() / "text.txt"}), invalidFormats);
    const std::string fifo = directory_.path() / "text.html";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    expectRefused(writeFormats({fifo}), invalidFormats);
}

TEST_F(WriteFormats, refusesMoreFilesThanThereAreFormats) {
    expectRefused(writeFormats(std::vector<std::string>(11, file("text.txt", "a"))), invalidFormats);
}

TEST_F(WriteFormats, takes128MebibytesInAllAndNotOneByteMore) {
    const std::string pdf = file("document.pdf", "%PDF-");
    const std::string png = file("image.png", readPicture("png-2-8.png"));
    std::filesystem::resize_file(pdf, 67'108'864);
    std::filesystem::resize_file(png, 67'108'864);
    EXPECT_TRUE(request(agent(), writeFormats({pdf, png})).value("ok", false));
    EXPECT_EQ(otherApplication().content().at(0).at(1).second.size(), 67'108'864U);
    expectRefused(writeFormats({pdf, png, file("text.txt", "a")}), invalidFormats);
    std::filesystem::resize_file(png, 67'108'865);
    expectRefused(writeFormats({pdf, png}), invalidFormats);
}

TEST_F(WriteFormats, countsTheByteOrderMarkThatHtmlIsGiven) {
    expectRefused(writeFormats({file("text.html", std::string(4'194'304, 'a'))}), invalidFormats);
    EXPECT_TRUE(
        request(agent(), writeFormats({file("text.html", std::string(4'194'301, 'a'))})).value("ok", false));
}

TEST_F(WriteFormats, letsALocalCopyWin) {
    expectLocalCopyWins(writeFormats({file("text.txt", "a")}));
}

} // namespace

} // namespace tavel
