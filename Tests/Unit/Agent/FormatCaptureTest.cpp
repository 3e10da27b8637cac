#include "Support/Uuid.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"
#include "Tests/Support/Permissions.h"
#include "Tests/Unit/Agent/ExportFixture.h"

#include <utility>

namespace tavel {
namespace {

constexpr std::string_view gifSignature = "GIF89a";
const std::string tiffSignature("II*\0", 4);
constexpr std::string_view jpegSignature = "\xFF\xD8\xFF";

constexpr std::string_view pdf = "com.adobe.pdf";
constexpr std::string_view gif = "com.compuserve.gif";
constexpr std::string_view svg = "public.svg-image";
constexpr std::string_view jpeg = "public.jpeg";
constexpr std::string_view rtf = "public.rtf";
constexpr std::string_view html = "public.html";

constexpr std::size_t mebibyte = std::size_t{1} << 20;

class FormatCapture : public ExportFixture {
protected:
    static Representation large(std::string_view type, std::string_view signature, std::size_t size) {
        std::string content(signature);
        content.resize(size, '.');
        return {std::string(type), Bytes::adopt(std::move(content))};
    }

    /// Exports the current content; returns the published paths.
    std::vector<std::filesystem::path> publishedPaths() {
        EXPECT_EQ(polled(), Events{announcement(pasteboard().changeCount())});
        const auto paths = pathsIn(finished(), "formats");
        return {paths.begin(), paths.end()};
    }

    Names publishedNames() {
        Names names;
        for (const auto& path : publishedPaths())
            names.push_back(path.filename().string());
        return names;
    }
};

TEST_F(FormatCapture, publishesOneFilePerFormatSortedByName) {
    copy({representation(html, "<b>é</b>"), representation(pasteboardType::string, "é"),
          representation(markerType, "m"), representation(rtf, "{\\rtf1 e}")});
    EXPECT_EQ(polled(), Events{announcement(42, "m")});
    const Events events = finished();
    const auto paths = pathsIn(events, "formats");
    EXPECT_EQ(events, Events{pathsEvent("formats", paths, 42, "m")});
    const std::filesystem::path directory = std::filesystem::path(paths.at(0)).parent_path();
    EXPECT_EQ(paths, (std::vector<std::string>{directory / "text.html", directory / "text.rtf",
                                               directory / "text.txt"}));
    EXPECT_EQ(contentOf(directory / "text.html"), "<b>é</b>");
    EXPECT_EQ(contentOf(directory / "text.rtf"), "{\\rtf1 e}");
    EXPECT_EQ(contentOf(directory / "text.txt"), "é");
    EXPECT_EQ(polled(), Events());
}

TEST_F(FormatCapture, keepsDirectoryAndFilesToTheirOwner) {
    copy({representation(html, "a")});
    const std::filesystem::path file = publishedPaths().at(0);
    const std::filesystem::path directory = file.parent_path();
    EXPECT_EQ(directory.parent_path(), worker->exportDirectory());
    constexpr std::string_view prefix = "formats-";
    ASSERT_TRUE(directory.filename().string().starts_with(prefix)) << directory;
    EXPECT_TRUE(isUuid(directory.filename().string().substr(prefix.size()))) << directory;
    EXPECT_EQ(modeOf(directory), 0700U);
    EXPECT_EQ(modeOf(file), 0600U);
}

TEST_F(FormatCapture, leavesTextAndPngWithoutFurtherFormatsToTheOtherPaths) {
    copy({representation(pasteboardType::string, "a")});
    EXPECT_EQ(polled(), (Events{announcement(42), textEvent("YQ", 1, 42)}));
    const std::string picture = scriptedPicture(pngSignature, 2, 3);
    copyPng(picture);
    EXPECT_EQ(polled(), Events{announcement(43)});
    EXPECT_EQ(contentOf(pathsIn(finished(), "image").at(0)), picture);
    copy({representation(pasteboardType::string, "a"), representation(pasteboardType::png, picture)});
    EXPECT_EQ(polled(), Events{announcement(44)});
    EXPECT_EQ(contentOf(pathsIn(finished(), "image").at(0)), picture);
}

TEST_F(FormatCapture, exportsEachFormatThatIsMoreThanTextOrPng) {
    const std::vector<std::pair<ClipboardFormat, std::string>> samples{
        {*findClipboardFormat("document.pdf"), "%PDF-1.7"},
        {*findClipboardFormat("image.gif"), "GIF87a"},
        {*findClipboardFormat("image.svg"), "<svg/>"},
        {*findClipboardFormat("image.webp"), "RIFF....WEBP"},
        {*findClipboardFormat("image.tiff"), tiffSignature},
        {*findClipboardFormat("image.jpeg"), std::string(jpegSignature)},
        {*findClipboardFormat("text.rtf"), "{\\rtf1}"},
        {*findClipboardFormat("text.html"), "<p>"}};
    for (const auto& [format, content] : samples) {
        SCOPED_TRACE(format.name);
        copy({representation(format.type, content)});
        const auto paths = publishedPaths();
        ASSERT_EQ(paths.size(), 1U); // none of these converts to PNG
        EXPECT_EQ(paths[0].filename(), format.name);
        EXPECT_EQ(contentOf(paths[0]), content);
    }
}

TEST_F(FormatCapture, prefersFilesToFormats) {
    copy({representation(html, "a"), representation(pasteboardType::fileUrl, "file:///a")});
    EXPECT_EQ(polled(), (Events{announcement(42), pathsEvent("files", {"/a"}, 42)}));
}

TEST_F(FormatCapture, leavesOutWhatIsInvalid) {
    copy({representation(html, "a"), representation(rtf, "no rtf"), representation(pdf, "no pdf"),
          representation(pasteboardType::png, "no png"), representation(pasteboardType::string, "")});
    EXPECT_EQ(publishedNames(), Names{"text.html"});
}

TEST_F(FormatCapture, leavesOutWhatIsNotDelivered) {
    pasteboard().withhold(rtf);
    copy({representation(html, "a"), representation(rtf, "{\\rtf1}")});
    EXPECT_EQ(publishedNames(), Names{"text.html"});
}

TEST_F(FormatCapture, exportsTextAndPngWhenOnlyTheFurtherFormatIsInvalid) {
    copy({representation(rtf, "no rtf"), representation(pasteboardType::string, "a"),
          representation(pasteboardType::png, scriptedPicture(pngSignature, 2, 3))});
    EXPECT_EQ(publishedNames(), (Names{"image.png", "text.txt"}));
}

TEST_F(FormatCapture, warnsWhenNothingIsReadableAndNamesTheTypesThatCouldHaveBeen) {
    copy({representation("com.example.private", "x"), representation(rtf, "no rtf"),
          representation(pdf, "no pdf")});
    EXPECT_EQ(polled(), (Events{announcement(42),
                                warning("Presse-papiers : formats annoncés mais aucune représentation "
                                        "lisible/valide (public.rtf, com.adobe.pdf).")}));
    EXPECT_FALSE(isExportHeld());
    EXPECT_EQ(polled(), Events());
}

TEST_F(FormatCapture, goesOnToThePictureAfterThatWarning) {
    const std::string picture = scriptedPicture("jpeg", 2, 3); // with the type of TIFF
    copy({representation(pasteboardType::tiff, picture)});
    EXPECT_EQ(polled(), (Events{announcement(42),
                                warning("Presse-papiers : formats annoncés mais aucune représentation "
                                        "lisible/valide (public.tiff).")}));
    EXPECT_EQ(contentOf(pathsIn(finished(), "image").at(0)), scriptedPicture(pngSignature, 2, 3));
}

TEST_F(FormatCapture, goesOnToTheTextAfterThatWarning) {
    // An empty text is no valid representation, but still a text.
    copy({representation(html, ""), representation(pasteboardType::string, "")});
    EXPECT_EQ(polled(),
              (Events{announcement(42),
                      warning("Presse-papiers : formats annoncés mais aucune représentation lisible/valide "
                              "(public.html, public.utf8-plain-text)."),
                      textEvent("", 0, 42)}));
}

TEST_F(FormatCapture, warnsWithoutNamesWhenTheTypesAreGoneByThen) {
    pasteboard().withhold(html);
    copy({representation(html, "a")});
    pasteboard().onCall([this](const std::string& call) {
        if (call == "data public.html")
            pasteboard().changeFromOutside({});
    });
    EXPECT_EQ(polled(), (Events{announcement(42), warning("Presse-papiers : formats annoncés mais aucune "
                                                          "représentation lisible/valide ().")}));
}

TEST_F(FormatCapture, addsAPngToAPictureInAnotherFormat) {
    const std::string picture = scriptedPicture(tiffSignature, 2, 3);
    copy({representation(pasteboardType::tiff, picture)});
    const auto paths = publishedPaths();
    ASSERT_EQ(paths.size(), 2U);
    EXPECT_EQ(paths[0].filename(), "image.png");
    EXPECT_EQ(contentOf(paths[0]), scriptedPicture(pngSignature, 2, 3));
    EXPECT_EQ(contentOf(paths[1]), picture);
}

TEST_F(FormatCapture, makesThePngFromTheFirstPictureInTheTable) {
    copy({representation(jpeg, scriptedPicture(jpegSignature, 6, 6)),
          representation(pasteboardType::tiff, scriptedPicture(tiffSignature, 5, 5)),
          representation(gif, scriptedPicture(gifSignature, 4, 4))});
    EXPECT_EQ(contentOf(publishedPaths().at(2)), scriptedPicture(pngSignature, 4, 4));
    EXPECT_EQ(platform.codec.converted, Names{scriptedPicture(gifSignature, 4, 4)});
}

TEST_F(FormatCapture, triesNoSecondPictureWhenTheFirstCannotBeConverted) {
    copy({representation(gif, "GIF89a nonsense"),
          representation(pasteboardType::tiff, scriptedPicture(tiffSignature, 5, 5))});
    EXPECT_EQ(publishedNames(), (Names{"image.gif", "image.tiff"}));
    EXPECT_TRUE(platform.codec.converted.empty());
}

TEST_F(FormatCapture, keepsThePngThatIsThere) {
    const std::string png = scriptedPicture(pngSignature, 1, 1);
    copy({representation(pasteboardType::tiff, scriptedPicture(tiffSignature, 5, 5)),
          representation(pasteboardType::png, png)});
    EXPECT_EQ(contentOf(publishedPaths().at(0)), png);
    EXPECT_TRUE(platform.codec.converted.empty());
}

TEST_F(FormatCapture, neverTurnsAVectorPictureIntoPixels) {
    copy({representation(svg, "<svg" + scriptedPicture("", 5, 5))});
    EXPECT_EQ(publishedNames(), Names{"image.svg"});
}

TEST_F(FormatCapture, addsAPngThatJustFits) {
    const std::string picture = scriptedPicture(gifSignature, 4, 4);
    platform.codec.extraEncodedBytes =
        128 * mebibyte - picture.size() - scriptedPicture(pngSignature, 4, 4).size();
    copy({representation(gif, picture)});
    EXPECT_EQ(publishedNames(), (Names{"image.gif", "image.png"}));
}

TEST_F(FormatCapture, leavesOutAPngThatDoesNotFit) {
    const std::string picture = scriptedPicture(gifSignature, 4, 4);
    platform.codec.extraEncodedBytes =
        128 * mebibyte - picture.size() - scriptedPicture(pngSignature, 4, 4).size() + 1;
    copy({representation(gif, picture)});
    EXPECT_EQ(publishedNames(), Names{"image.gif"});
}

TEST_F(FormatCapture, leavesOutWhatDoesNotFitAndTakesWhatStillDoes) {
    copy({large(pdf, "%PDF-", 100 * mebibyte), large(gif, gifSignature, 40 * mebibyte),
          large(pasteboardType::tiff, tiffSignature, 10 * mebibyte)});
    EXPECT_EQ(publishedNames(), (Names{"document.pdf", "image.tiff"}));
}

TEST_F(FormatCapture, fillsTheBudgetToTheLastByte) {
    copy({large(pdf, "%PDF-", 100 * mebibyte), large(gif, gifSignature, 28 * mebibyte)});
    EXPECT_EQ(publishedNames(), (Names{"document.pdf", "image.gif"}));
    copy({large(pdf, "%PDF-", 100 * mebibyte), large(gif, gifSignature, 28 * mebibyte + 1)});
    EXPECT_EQ(publishedNames(), Names{"document.pdf"});
}

} // namespace
} // namespace tavel
