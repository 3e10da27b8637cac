#include "Tests/Unit/FilePaste/FilePasteFixture.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {
namespace {

// The choice of the representation that becomes the file.

constexpr std::size_t mostImageBytes = 134'217'728;
constexpr std::size_t mostTextBytes = 4'194'304;

class FilePasteContent : public FilePasteFixture {
protected:
    /// Extension and content, such as "txt:Bonjour", or the error.
    std::string fileOf(PasteboardItem item) {
        copy(std::move(item));
        return file();
    }

    std::string file() {
        FileData data;
        const std::string error = errorOf([&] { data = fileData(); });
        return error.empty() ? data.ext + ":" + std::string(data.data.view()) : error;
    }

    std::string extensionOf(PasteboardItem item) {
        const std::string file = fileOf(std::move(item));
        return file.substr(0, file.find(':'));
    }

    static Representation text() { return representation("public.utf8-plain-text", "text"); }
};

TEST_F(FilePasteContent, isTheBestRepresentation) {
    const std::vector<std::pair<std::string, Representation>> bestFirst{
        {"pdf:%PDF-1.7", representation("com.adobe.pdf", "%PDF-1.7")},
        {"gif:GIF89a", representation("com.compuserve.gif", "GIF89a")},
        {"svg:<svg/>", representation("public.svg-image", "<svg/>")},
        {"webp:RIFF", representation("org.webmproject.webp", "RIFF")},
        {"jpg:\xFF\xD8\xFF\xE0", representation("public.jpeg", "\xFF\xD8\xFF\xE0")},
        {"jpg:" + scriptedPicture(jpegSignature, 1, 2),
         representation("public.png", scriptedPicture("png", 1, 2))},
        {"jpg:" + scriptedPicture(jpegSignature, 3, 4),
         representation("public.tiff", scriptedPicture("tiff", 3, 4))},
        {"txt:text", text()},
    };
    for (std::size_t best = 0; best < bestFirst.size(); ++best) {
        // Their order in the item does not count.
        PasteboardItem item;
        for (std::size_t other = bestFirst.size(); other-- > best;)
            item.push_back(bestFirst[other].second);
        EXPECT_EQ(fileOf(item), bestFirst[best].first);
        EXPECT_EQ(fileOf({item.rbegin(), item.rend()}), bestFirst[best].first);
    }
}

TEST_F(FilePasteContent, hasNoOtherFormat) {
    EXPECT_EQ(fileOf({representation("public.html", "<b>"), representation("public.rtf", "{")}), "Tavel 4");
    EXPECT_EQ(fileOf({}), "Tavel 4");
    pasteboard().changeFromOutside({});
    EXPECT_EQ(file(), "Tavel 4");
}

TEST_F(FilePasteContent, isAPdfOnlyWithItsSignature) {
    for (const std::string_view content : {"%PDF-", "%PDF-1.4\n", "%PDF-\xFF"})
        EXPECT_EQ(fileOf({representation("com.adobe.pdf", content), text()}), "pdf:" + std::string(content));
    for (const std::string_view content : {"", "%PDF", "%pdf-1.4", " %PDF-1.4", "\n%PDF-1.4", "PDF-"})
        EXPECT_EQ(fileOf({representation("com.adobe.pdf", content), text()}), "txt:text") << content;
}

TEST_F(FilePasteContent, isAJpegOnlyWithItsSignature) {
    for (const std::string_view content : {"\xFF\xD8\xFF", "\xFF\xD8\xFF\xE1x"})
        EXPECT_EQ(fileOf({representation("public.jpeg", content), text()}), "jpg:" + std::string(content));
    for (const std::string_view content : {"", "\xFF\xD8", "\xFF\xD8\xFE", "x\xFF\xD8\xFF", "JFIF"})
        EXPECT_EQ(fileOf({representation("public.jpeg", content), text()}), "txt:text") << content;
}

TEST_F(FilePasteContent, isNotCheckedInTheseFormats) {
    constexpr std::array formats{
        std::pair<std::string_view, std::string_view>{"com.compuserve.gif", "gif"},
        std::pair<std::string_view, std::string_view>{"public.svg-image", "svg"},
        std::pair<std::string_view, std::string_view>{"org.webmproject.webp", "webp"},
    };
    for (const auto& [type, ext] : formats) {
        for (const std::string_view content : {"", "x", "%PDF-", "\xFF\xFE"})
            EXPECT_EQ(fileOf({representation(type, content), text()}),
                      std::string(ext) + ":" + std::string(content));
    }
}

TEST_F(FilePasteContent, skipsTypesWithoutData) {
    const PasteboardItem item{representation("com.adobe.pdf", "%PDF-1"),
                              representation("com.compuserve.gif", "GIF"),
                              representation("public.svg-image", "<svg/>"),
                              representation("org.webmproject.webp", "RIFF"),
                              representation("public.jpeg", "\xFF\xD8\xFF"),
                              representation("public.png", scriptedPicture("png", 1, 2)),
                              representation("public.tiff", scriptedPicture("tiff", 3, 4)),
                              text()};
    const std::string png = "jpg:" + scriptedPicture(jpegSignature, 1, 2);
    const std::string tiff = "jpg:" + scriptedPicture(jpegSignature, 3, 4);
    const std::vector<std::string> next{"gif:GIF", "svg:<svg/>", "webp:RIFF", "jpg:\xFF\xD8\xFF",
                                        png,       tiff,         "txt:text",  "Tavel 4"};
    for (std::size_t i = 0; i < item.size(); ++i) {
        pasteboard().withhold(item[i].type);
        EXPECT_EQ(fileOf(item), next[i]) << item[i].type;
    }
}

TEST_F(FilePasteContent, requestsNothingAfterTheFirstUsableType) {
    copy({representation("com.compuserve.gif", "GIF"), text()});
    pasteboard().forgetCalls();
    EXPECT_EQ(file(), "gif:GIF");
    EXPECT_EQ(pasteboard().calls(), (std::vector<std::string>{"types", "data com.compuserve.gif"}));
}

TEST_F(FilePasteContent, isNothingThatMayNotBeRead) {
    copy({representation("com.compuserve.gif", "GIF"), text()});
    pasteboard().setReadAccess(ReadAccess::denied);
    EXPECT_EQ(file(), "Tavel 4");
    pasteboard().setReadAccess(ReadAccess::asks);
    EXPECT_EQ(file(), "gif:GIF");
}

TEST_F(FilePasteContent, hasAtMost128MebibytesForAnImage) {
    // One buffer serves all formats; their signatures stand at different offsets.
    std::string bytes = "%PDF-1.7";
    bytes.resize(16);
    bytes += jpegSignature;
    bytes.resize(32);
    bytes += scriptedPicture("png", 1, 1);
    bytes.resize(mostImageBytes + 33);
    const Bytes buffer = Bytes::adopt(std::move(bytes));
    struct Case {
        std::string_view type;
        std::size_t offset;
        std::string_view ext;
    };
    for (const auto& [type, offset, ext] : {
             Case{"com.adobe.pdf", 0, "pdf"},
             Case{"com.compuserve.gif", 0, "gif"},
             Case{"public.svg-image", 0, "svg"},
             Case{"org.webmproject.webp", 0, "webp"},
             Case{"public.jpeg", 16, "jpg"},
         }) {
        const Bytes largest = buffer.slice(offset, mostImageBytes);
        copy({Representation{std::string(type), largest}, text()});
        const FileData data = fileData();
        EXPECT_EQ(data.ext, ext);
        EXPECT_EQ(data.data.size(), mostImageBytes) << type;
        EXPECT_EQ(data.data.data(), largest.data()) << "nothing is copied";
        EXPECT_EQ(fileOf({{std::string(type), buffer.slice(offset, mostImageBytes + 1)}, text()}), "txt:text")
            << type;
    }
    for (const std::string type : {"public.png", "public.tiff"}) {
        EXPECT_EQ(extensionOf({{type, buffer.slice(32, mostImageBytes)}, text()}), "jpg") << type;
        EXPECT_EQ(extensionOf({{type, buffer.slice(32, mostImageBytes + 1)}, text()}), "txt") << type;
    }
}

TEST_F(FilePasteContent, hasAtMost4MebibytesForAText) {
    const std::string largest(mostTextBytes, 'x');
    EXPECT_EQ(fileOf({representation("public.utf8-plain-text", largest)}), "txt:" + largest);
    EXPECT_EQ(fileOf({representation("public.utf8-plain-text", largest + "x")}), "Tavel 4");
    std::string wide; // the limit counts bytes, not characters
    while (wide.size() < mostTextBytes)
        wide += "é";
    EXPECT_EQ(extensionOf({representation("public.utf8-plain-text", wide)}), "txt");
    EXPECT_EQ(extensionOf({representation("public.utf8-plain-text", wide + "é")}), "Tavel 4");
}

TEST_F(FilePasteContent, canBeAnEmptyText) {
    EXPECT_EQ(fileOf({representation("public.utf8-plain-text", "")}), "txt:");
    switchOn();
    pasteAs("a");
    ASSERT_EQ(files().size(), 1U);
    EXPECT_EQ(std::filesystem::file_size(files().front()), 0U);
}

TEST_F(FilePasteContent, isTheTextUnchanged) {
    for (const std::string_view content : {"\xEF\xBB\xBFtext", "a\r\nb", "  ", "é 😀"})
        EXPECT_EQ(fileOf({representation("public.utf8-plain-text", content)}), "txt:" + std::string(content));
}

TEST_F(FilePasteContent, joinsTheTextsOfAllItems) {
    pasteboard().changeFromOutside({{text()}, {text()}});
    EXPECT_EQ(file(), "txt:text\ntext");
}

TEST_F(FilePasteContent, isNoTextThatIsNotUtf8) {
    EXPECT_EQ(fileOf({representation("public.utf8-plain-text", "\xFF")}), "Tavel 4");
}

TEST_F(FilePasteContent, isReadNoFurtherThanItCanBecomeAFile) {
    const std::vector<std::string> pictures{"com.adobe.pdf",        "com.compuserve.gif", "public.svg-image",
                                            "org.webmproject.webp", "public.jpeg",        "public.png",
                                            "public.tiff"};
    PasteboardItem item{text()};
    for (const std::string& type : pictures) {
        item.push_back(representation(type, "x"));
        pasteboard().withhold(type);
    }
    EXPECT_EQ(fileOf(item), "txt:text");
    for (const std::string& type : pictures)
        EXPECT_EQ(pasteboard().limitOf(type), mostImageBytes) << type;
    EXPECT_EQ(pasteboard().limitOf("public.utf8-plain-text"), mostTextBytes);
}

} // namespace
} // namespace tavel
