#include "Tests/Protocol/ExportTest.h"
#include "Tests/Unit/Fixtures/OwnMounts.h"

#include <sys/mount.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <tuple>

namespace tavel {

namespace {

namespace fs = std::filesystem;

using Names = std::vector<std::string>;

const std::string unreadable =
    "Presse-papiers : formats annonc\u00E9s mais aucune repr\u00E9sentation lisible/valide (";
const std::string notPrepared = "Presse-papiers : \u00E9chec de pr\u00E9paration des formats (";

class CaptureFormats : public ExportTest {
protected:
    static Representation text(std::string_view content) {
        return representation("public.utf8-plain-text", content);
    }
    static Representation html(std::string_view content) { return representation("public.html", content); }

    Paths filesOf(const std::vector<Representation>& item) { return exportOf("formats", item); }
};

TEST_F(CaptureFormats, namesAFileForEachFormatOfAWebPageFragment) {
    const Paths files =
        filesOf({html("<b>\u00E9</b>"), text("\u00E9"), representation("public.rtf", "{\\rtf1}"),
                 representation("com.example.private", "x")});
    EXPECT_EQ(namesOf(files), (Names{"text.html", "text.rtf", "text.txt"}));
    const fs::path directory = files.at(0).parent_path();
    EXPECT_EQ(directory.parent_path(), exportDirectory());
    EXPECT_TRUE(directory.filename().string().starts_with("formats-"));
    EXPECT_EQ(contentOf(directory / "text.html"), "<b>\u00E9</b>");
    EXPECT_EQ(contentOf(directory / "text.rtf"), "{\\rtf1}");
    EXPECT_EQ(contentOf(directory / "text.txt"), "\u00E9");
    EXPECT_EQ(namesIn(directory), namesOf(files));
    EXPECT_EQ(fs::status(directory).permissions(), fs::perms(0700));
    for (const fs::path& file : files)
        EXPECT_EQ(fs::status(file).permissions(), fs::perms(0600));
}

TEST_F(CaptureFormats, reportsTheMarkerWithTheFormats) {
    const std::int64_t sequence = copy({html("a"), representation(originMarkerType, "m")});
    EXPECT_EQ(agent().nextMessage(), announcement(sequence, "m"));
    const Json event = agent().nextMessage();
    EXPECT_EQ(event.at("kind"), "formats");
    EXPECT_EQ(event.at("marker"), "m");
}

TEST_F(CaptureFormats, exportsADocument) {
    const Paths files = filesOf({representation("com.adobe.pdf", "%PDF-1.7 and more")});
    EXPECT_EQ(namesOf(files), Names{"document.pdf"});
    EXPECT_EQ(contentOf(files.at(0)), "%PDF-1.7 and more");
}

TEST_F(CaptureFormats, addsAPngToEachKindOfPicture) {
    const std::vector<std::tuple<std::string, std::string, std::string>> pictures{
        {"public.tiff", "tiff-LZW.tif", "image.tiff"},
        {"com.compuserve.gif", "gif-animated.gif", "image.gif"},
        {"org.webmproject.webp", "webp-alpha.webp", "image.webp"},
        {"public.jpeg", "jpeg-progressive.jpg", "image.jpeg"}};
    for (const auto& [type, picture, name] : pictures) {
        SCOPED_TRACE(picture);
        const Paths files = filesOf({representation(type, readPicture(picture))});
        Names names{name, "image.png"};
        std::ranges::sort(names);
        ASSERT_EQ(namesOf(files), names);
        const fs::path directory = files.at(0).parent_path();
        EXPECT_TRUE(contentOf(directory / name) == readPicture(picture));
        EXPECT_EQ(pngSize(directory / "image.png"), "203x149");
    }
}

TEST_F(CaptureFormats, makesThePngFromTheGifRatherThanTheTiff) {
    const Paths files = filesOf({representation("public.tiff", readPicture("tiff-LZW.tif")),
                                 representation("com.compuserve.gif", readPicture("gif-screen.gif"))});
    ASSERT_EQ(namesOf(files), (Names{"image.gif", "image.png", "image.tiff"}));
    EXPECT_EQ(pngSize(files.at(1)), "640x480");
}

TEST_F(CaptureFormats, exportsAPictureThatCannotBeConvertedWithoutAPng) {
    EXPECT_EQ(namesOf(filesOf({representation("com.compuserve.gif", "GIF89a and no more")})),
              Names{"image.gif"});
}

TEST_F(CaptureFormats, neverTurnsAVectorPictureIntoPixels) {
    EXPECT_EQ(namesOf(filesOf(
                  {representation("public.svg-image", "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"9\" "
                                                      "height=\"9\"/>")})),
              Names{"image.svg"});
}

TEST_F(CaptureFormats, leavesPlainTextAndPlainPngToTheirOwnEvents) {
    const std::int64_t sequence = copy({text("hi")});
    EXPECT_EQ(agent().nextMessage(), announcement(sequence));
    EXPECT_EQ(agent().nextMessage(), textEvent("aGk", 2, sequence));
    EXPECT_EQ(exportOf("image", {representation("public.png", readPicture("png-2-8.png")), text("a")}).size(),
              1U);
}

TEST_F(CaptureFormats, keepsOnlyTheDirectoryOfTheLastFormats) {
    const fs::path picture =
        exportOf("image", {representation("public.png", readPicture("png-2-8.png"))}).at(0);
    const fs::path first = filesOf({html("1")}).at(0).parent_path();
    const fs::path second = filesOf({html("2")}).at(0).parent_path();
    Names names{picture.filename().string(), second.filename().string()};
    std::ranges::sort(names);
    EXPECT_EQ(namesIn(exportDirectory()), names);
    EXPECT_NE(first, second);
}

TEST_F(CaptureFormats, warnsWhenNothingIsReadableAndGoesOnToTheText) {
    const std::int64_t sequence = copy({representation("public.rtf", "no rtf"),
                                        representation("com.adobe.pdf", ""), text(std::string("a\0b", 3))});
    EXPECT_EQ(agent().nextMessage(), announcement(sequence));
    EXPECT_EQ(agent().nextMessage(),
              warning(unreadable + "public.rtf, com.adobe.pdf, public.utf8-plain-text)."));
    EXPECT_EQ(agent().nextMessage(), textEvent("YQBi", 3, sequence));
}

TEST_F(CaptureFormats, warnsWithTheErrorsCodeWhenTheDirectoryCannotBeMade) {
    agent();
    fs::remove_all(directory_.temporaryDirectory());
    directory_.createFile("temporary"); // a file in place of the directory
    expectWarning({html("a")}, notPrepared + "NSCocoaErrorDomain:512).");
}

TEST_F(CaptureFormats, warnsOfAFullDiskAndLeavesNothingThere) {
    enterOwnFileSystemView();
    const std::string temporary = directory_.temporaryDirectory().string();
    if (mount("tmpfs", temporary.c_str(), "tmpfs", 0, "mode=0700,size=8m") != 0)
        throw std::system_error(errno, std::generic_category(),
                                "This test mounts a small file system, which is not permitted here");
    std::string document = "%PDF-";
    document.resize(10'000'000, '.');
    expectWarning({html("a"), representation("com.adobe.pdf", document)},
                  notPrepared + "NSCocoaErrorDomain:640).");
    EXPECT_EQ(namesIn(exportDirectory()), Names());
    EXPECT_EQ(namesOf(filesOf({html("a")})), Names{"text.html"}); // what fits is still exported
    umount2(temporary.c_str(), MNT_DETACH);
}

TEST_F(CaptureFormats, leaveNothingBehindWhenTheAgentStopsWhileItWritesThem) {
    std::string document = "%PDF-";
    document.resize(100'000'000, '.');
    EXPECT_EQ(agent().nextMessage(),
              announcement(copy({representation("com.adobe.pdf", document), html("a")})));
    agent().send(R"({"command":"quit","request_id":1})"
                 "\n");
    EXPECT_EQ(agent().waitForExit(), 0);
    EXPECT_TRUE(exportDirectories().empty());
}

} // namespace

} // namespace tavel
