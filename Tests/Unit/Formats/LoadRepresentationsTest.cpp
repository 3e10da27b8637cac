#include "TavelClipboardAgent/Formats/LoadRepresentations.h"

#include "Support/Error.h"
#include "Support/ScopeExit.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"
#include "Tests/Unit/Fixtures/ForkedFunction.h"
#include "Tests/Unit/Fixtures/ScratchDirectory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {
namespace {

namespace fs = std::filesystem;

const std::string byteOrderMark = "\xEF\xBB\xBF";
const std::string pngSignature = "\x89PNG\r\n\x1A\n";

using Paths = std::vector<std::string>;
using Content = std::pair<std::string, std::string>; // type and data

class LoadRepresentations : public testing::Test {
protected:
    std::string file(const fs::path& name, std::string_view content = "t") const {
        return scratch_.makeFile(name, content).string();
    }

    /// A sparse file of that size: only its start takes up space on the disk.
    std::string largeFile(const fs::path& name, std::string_view start, std::size_t size) const {
        std::string path = file(name, start);
        fs::resize_file(path, size);
        return path;
    }

    /// A text of that size, for formats in which zero bytes are invalid.
    std::string textFile(const fs::path& name, std::size_t size) const {
        return file(name, std::string(size, 'x'));
    }

    std::string directory(const fs::path& name) const {
        fs::create_directory(path(name));
        return path(name);
    }

    std::string path(const fs::path& name) const { return (scratch_ / name).string(); }

    const ScratchDirectory& scratch() const { return scratch_; }

private:
    ScratchDirectory scratch_;
};

std::vector<Content> load(const Paths& paths) {
    std::vector<Content> contents;
    for (const Representation& one : loadRepresentations(paths))
        contents.emplace_back(one.type, one.data.view());
    return contents;
}

std::optional<Error> loadingError(const Paths& paths) {
    try {
        static_cast<void>(loadRepresentations(paths));
        return std::nullopt;
    } catch (const Error& error) {
        return error;
    }
}

/// The code of the error, or 0 without an error. Expects the formats' domain.
int codeOf(const Paths& paths) {
    const auto error = loadingError(paths);
    if (!error)
        return 0;
    EXPECT_EQ(error->domain(), "ClipboardFormats");
    EXPECT_FALSE(error->description().empty());
    return error->code();
}

TEST_F(LoadRepresentations, givesEveryFormatItsType) {
    const std::vector<std::pair<std::string_view, std::string>> contents{
        {"document.pdf", "%PDF-1.7"},
        {"image.gif", "GIF89a"},
        {"image.svg", "<svg/>"},
        {"image.webp", "RIFF....WEBP"},
        {"image.tiff", std::string("MM\0*", 4)},
        {"image.jpeg", "\xFF\xD8\xFF\xE0"},
        {"image.png", pngSignature},
        {"text.rtf", "{\\rtf1}"},
        {"text.html", byteOrderMark + "<p>"},
        {"text.txt", "text"}};
    Paths paths;
    std::vector<Content> expected;
    for (const auto& [name, content] : contents) {
        paths.push_back(file(name, content));
        expected.emplace_back(findClipboardFormat(name)->type, content);
    }
    ASSERT_EQ(paths.size(), clipboardFormats.size());
    EXPECT_EQ(load(paths), expected);
}

TEST_F(LoadRepresentations, keepsTheOrderOfThePaths) {
    const std::string text = file("text.txt", "text");
    const std::string png = file("image.png", pngSignature);
    const Content textContent{"public.utf8-plain-text", "text"};
    const Content pngContent{"public.png", pngSignature};
    EXPECT_EQ(load({text, png}), (std::vector{textContent, pngContent}));
    EXPECT_EQ(load({png, text}), (std::vector{pngContent, textContent}));
    EXPECT_EQ(load({text}), (std::vector{textContent}));
}

TEST_F(LoadRepresentations, refusesAnEmptyListAndMorePathsThanFormats) {
    EXPECT_EQ(codeOf({}), 1);
    EXPECT_EQ(codeOf(Paths(clipboardFormats.size() + 1, path("image.png"))), 1)
        << "before the missing file is looked for";
    EXPECT_EQ(codeOf(Paths(10'000)), 1);
    EXPECT_EQ(codeOf(Paths(clipboardFormats.size(), path("image.png"))), 2);
}

TEST_F(LoadRepresentations, refusesUnknownNames) {
    for (const std::string_view name :
         {"text.htm", "Image.png", "TEXT.TXT", "image.bmp", "image.png.bak", "png"})
        EXPECT_EQ(codeOf({file(name, pngSignature)}), 2) << name;
    for (const std::string_view name : {"", "/", "//", ".", "..", "image.png/..", "text.txt/."})
        EXPECT_EQ(codeOf({std::string(name)}), 2) << name;
    directory("image.png");
    EXPECT_EQ(codeOf({file("image.png/other", pngSignature)}), 2) << "a directory's name counts for nothing";
}

TEST_F(LoadRepresentations, refusesAFormatTwice) {
    directory("other");
    const std::string text = file("text.txt");
    EXPECT_EQ(codeOf({text, text}), 2);
    EXPECT_EQ(codeOf({text, file("other/text.txt")}), 2);
    EXPECT_EQ(codeOf({text, file("image.png", pngSignature), file("other/text.txt")}), 2);
}

TEST_F(LoadRepresentations, refusesAnEmptyFile) {
    for (const ClipboardFormat& format : clipboardFormats)
        EXPECT_EQ(codeOf({file(format.name, "")}), 2) << format.name;
}

TEST_F(LoadRepresentations, refusesOtherThanRegularFiles) {
    EXPECT_EQ(codeOf({path("text.txt")}), 2) << "missing";
    EXPECT_EQ(codeOf({directory("image.png")}), 2);
    EXPECT_EQ(codeOf({path("image.png") + "/"}), 2);
    ASSERT_EQ(mkfifo(path("image.gif").c_str(), 0600), 0);
    EXPECT_EQ(codeOf({path("image.gif")}), 2) << "and does not wait for its writer";
    EXPECT_EQ(codeOf({file("text.txt") + '\0'}), 2);
    EXPECT_EQ(codeOf({std::string(path("far")) + '\0' + "/text.txt"}), 2);
}

TEST_F(LoadRepresentations, refusesALink) {
    fs::create_symlink(file("target", pngSignature), path("image.png"));
    fs::create_symlink(path("missing"), path("text.txt"));
    EXPECT_EQ(codeOf({path("image.png")}), 2);
    EXPECT_EQ(codeOf({path("text.txt")}), 2);
}

TEST_F(LoadRepresentations, followsALinkToADirectory) {
    directory("directory");
    file("directory/text.txt", "text");
    fs::create_directory_symlink(path("directory"), path("link"));
    EXPECT_EQ(load({path("link/text.txt")}), (std::vector<Content>{{"public.utf8-plain-text", "text"}}));
}

TEST_F(LoadRepresentations, refusesAFileWithoutReadPermission) {
    const std::string text = file("text.txt");
    fs::permissions(scratch().path(), fs::perms{0711});
    fs::permissions(text, fs::perms{0000});
    EXPECT_EQ(exitStatusOf([&] {
                  dropRootRights();
                  return codeOf({text});
              }),
              2);
}

TEST_F(LoadRepresentations, refusesAPathThatEndsInASlash) {
    EXPECT_EQ(codeOf({file("text.txt") + "/"}), 2) << "the name is right, and what it names is no directory";
    EXPECT_EQ(codeOf({path("text.txt") + "//"}), 2);
}

TEST_F(LoadRepresentations, takesRelativePaths) {
    file("text.txt", "text");
    file("image.png", pngSignature);
    const fs::path former = fs::current_path();
    const ScopeExit restore([&] { fs::current_path(former); });
    fs::current_path(scratch().path());
    EXPECT_EQ(load({"text.txt", "./image.png"}),
              (std::vector<Content>{{"public.utf8-plain-text", "text"}, {"public.png", pngSignature}}));
    EXPECT_EQ(codeOf({"text.txt", "./text.txt"}), 2);
}

TEST_F(LoadRepresentations, refusesContentOfAnotherFormat) {
    for (const ClipboardFormat& format : clipboardFormats)
        EXPECT_EQ(codeOf({file(format.name, "\xC3 no format at all")}), 3) << format.name;
    EXPECT_EQ(codeOf({file("document.pdf", "%PDF")}), 3);
    EXPECT_EQ(codeOf({textFile("text.txt", 4'194'304)}), 0);
    EXPECT_EQ(codeOf({textFile("text.txt", 4'194'305)}), 3);
}

TEST_F(LoadRepresentations, stopsAtTheFirstInvalidFile) {
    const std::string wrongContent = file("document.pdf", "text");
    const std::string wrongName = file("text.htm");
    const std::string good = file("text.txt");
    EXPECT_EQ(codeOf({good, wrongContent, wrongName}), 3);
    EXPECT_EQ(codeOf({good, wrongName, wrongContent}), 2);
    EXPECT_EQ(codeOf({wrongContent, path("image.png")}), 3);
}

TEST_F(LoadRepresentations, takes128MebibytesInOneFileAndNotAByteMore) {
    EXPECT_EQ(codeOf({largeFile("image.png", pngSignature, 134'217'728)}), 0);
    EXPECT_EQ(codeOf({largeFile("image.png", pngSignature, 134'217'729)}), 2);
    EXPECT_EQ(codeOf({largeFile("image.png", pngSignature, std::size_t{1} << 40)}), 2);
}

TEST_F(LoadRepresentations, takes128MebibytesInAllAndNotAByteMore) {
    constexpr std::size_t half = 67'108'864;
    const std::string png = largeFile("image.png", pngSignature, half);
    const std::string gif = largeFile("image.gif", "GIF89a", half);
    const auto loaded = loadRepresentations(Paths{png, gif});
    ASSERT_EQ(loaded.size(), 2U);
    EXPECT_EQ(loaded[0].data.size() + loaded[1].data.size(), maximumFormatsBytes);
    EXPECT_EQ(codeOf({png, gif, file("text.txt")}), 2) << "nothing is left for a third";
    fs::resize_file(gif, half + 1);
    EXPECT_EQ(codeOf({png, gif}), 2);
    fs::resize_file(gif, half - 1);
    EXPECT_EQ(codeOf({png, gif, file("text.txt")}), 0);
    EXPECT_EQ(codeOf({png, gif, file("text.txt", "tt")}), 2);
}

TEST_F(LoadRepresentations, marksHtmlAsUtf8) {
    const auto htmlOf = [&](const std::string& content) {
        return load({file("text.html", content)}).at(0).second;
    };
    EXPECT_EQ(htmlOf("<p>Voil\xC3\xA0"), byteOrderMark + "<p>Voil\xC3\xA0");
    EXPECT_EQ(htmlOf("p"), byteOrderMark + "p");
    EXPECT_EQ(htmlOf(byteOrderMark + "<p>"), byteOrderMark + "<p>") << "not a second time";
    EXPECT_EQ(htmlOf(byteOrderMark), byteOrderMark);
    EXPECT_EQ(htmlOf("<p>" + byteOrderMark), byteOrderMark + "<p>" + byteOrderMark);
}

TEST_F(LoadRepresentations, marksNothingElse) {
    EXPECT_EQ(load({file("text.txt", "text")}).at(0).second, "text");
    EXPECT_EQ(load({file("text.rtf", "{\\rtf1}")}).at(0).second, "{\\rtf1}");
    EXPECT_EQ(load({file("image.svg", "<svg/>")}).at(0).second, "<svg/>");
}

TEST_F(LoadRepresentations, countsTheMarkInTheLimitOfHtml) {
    EXPECT_EQ(codeOf({textFile("text.html", 4'194'301)}), 0);
    EXPECT_EQ(codeOf({textFile("text.html", 4'194'302)}), 3);
    EXPECT_EQ(codeOf({textFile("text.html", 4'194'304)}), 3);
    EXPECT_EQ(codeOf({textFile("text.html", 4'194'305)}), 3);
    EXPECT_EQ(codeOf({file("text.html", byteOrderMark + std::string(4'194'301, 'x'))}), 0);
    EXPECT_EQ(codeOf({file("text.html", byteOrderMark + std::string(4'194'302, 'x'))}), 3);
}

TEST_F(LoadRepresentations, countsTheMarkInTheLimitOfAll) {
    const std::string png = largeFile("image.png", pngSignature, maximumFormatsBytes - 10);
    EXPECT_EQ(codeOf({png, textFile("text.html", 7)}), 0);
    EXPECT_EQ(codeOf({png, textFile("text.html", 8)}), 3);
    EXPECT_EQ(codeOf({png, textFile("text.html", 10)}), 3);
    EXPECT_EQ(codeOf({png, textFile("text.html", 11)}), 2) << "too large before it is read";
    EXPECT_EQ(codeOf({png, textFile("text.html", 7), file("text.txt")}), 2)
        << "the mark has used up the rest";
    EXPECT_EQ(codeOf({png, textFile("text.html", 6), file("text.txt")}), 0);
}

} // namespace
} // namespace tavel
