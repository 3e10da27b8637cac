#include "Support/Base64.h"
#include "Tests/X11/X11AgentTest.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <ostream>

namespace tavel {

namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::HasSubstr;

/// A command-line program that copies and pastes.
struct Application {
    const char* name;
    std::vector<std::string> copyText; // gets the text as its input or as its last argument
    bool readsInput;
    std::vector<std::string> pasteText;
};

void PrintTo(const Application& application, std::ostream* out) {
    *out << application.name;
}

std::string contentOfFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string base64Of(std::string_view bytes) {
    std::string text;
    appendBase64(text, bytes);
    return text.substr(0, text.find('='));
}

class TextOfApplication : public X11AgentTest, public testing::WithParamInterface<Application> {
protected:
    void copyText(const std::string& text) {
        std::vector<std::string> command = GetParam().copyText;
        if (GetParam().readsInput) {
            outputOf(command, text);
        } else {
            command.push_back(text);
            startReady(command);
        }
    }
};

/// Only for programs that read the text from their input, as a command line cannot be as long.
class LongTextOfApplication : public TextOfApplication {};

TEST_P(TextOfApplication, isReported) {
    const std::string text = "h\xC3\xA9llo, \xF0\x9F\x93\x8B\nworld";
    agent();
    copyText(text);
    EXPECT_EQ(agent().nextMessage(), announcement(1));
    EXPECT_EQ(agent().nextMessage(), textEvent(base64Of(text), text.size(), 1));
}

TEST_P(LongTextOfApplication, of4MebibytesIsReported) {
    const std::string text = repeated("0123456789abcde\n", std::size_t{1} << 18);
    agent();
    copyText(text);
    EXPECT_EQ(agent().nextMessage(), announcement(1));
    EXPECT_TRUE(agent().nextMessage() == textEvent(base64Of(text), text.size(), 1));
}

TEST_P(TextOfApplication, canBeWhatTheParentSent) {
    for (const std::string& text : {std::string("h\xC3\xA9llo"), repeated("sixteen bytes...", 40'000)}) {
        const Json reply =
            request(agent(), {{"command", "write_text"}, {"text_b64", base64Of(text)}, {"marker", "here"}});
        EXPECT_TRUE(reply.value("ok", false)) << reply;
        EXPECT_TRUE(outputOf(GetParam().pasteText) == text) << text.size() << " bytes";
    }
}

const Application xclip{"xclip",
                        {"sh", "-c", "xclip -selection clipboard -in >/dev/null 2>&1"},
                        true,
                        {"xclip", "-selection", "clipboard", "-out"}};
const Application xsel{"xsel",
                       {"sh", "-c", "xsel --clipboard --input >/dev/null 2>&1"},
                       true,
                       {"xsel", "--clipboard", "--output"}};
const Application tavelPasteboard{"tavel", {TAVEL_PASTEBOARD, "copy"}, true, {TAVEL_PASTEBOARD, "paste"}};
const Application gtk{"gtk", {TAVEL_GTK_PEER, "copy-text"}, false, {TAVEL_GTK_PEER, "paste-text"}};
const Application qt{"qt", {TAVEL_QT_PEER, "copy-text"}, false, {TAVEL_QT_PEER, "paste-text"}};

std::string nameOf(const testing::TestParamInfo<Application>& test) {
    return test.param.name;
}

INSTANTIATE_TEST_SUITE_P(Of, TextOfApplication, testing::Values(xclip, xsel, tavelPasteboard, gtk, qt),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Of, LongTextOfApplication, testing::Values(xclip, xsel, tavelPasteboard), nameOf);

/// The path of a test program that uses a toolkit's clipboard.
class ContentOfToolkit : public X11AgentTest, public testing::WithParamInterface<const char*> {
protected:
    /// The files of the next export, by name. Expects no other export.
    std::map<std::string, std::string> nextExport() {
        EXPECT_EQ(agent().nextMessage().value("kind", ""), "unsupported");
        const Json event = agent().nextMessage();
        EXPECT_EQ(event.value("kind", ""), "formats") << event;
        std::map<std::string, std::string> files;
        for (const std::string path : event.value("paths", Json::array()))
            files[fs::path(path).filename()] = contentOfFile(path);
        return files;
    }

    std::string picture() const { return TAVEL_TEST_PICTURES "/png-2-8.png"; }
};

TEST_P(ContentOfToolkit, htmlIsExportedWithItsText) {
    agent();
    startReady({GetParam(), "copy-html", "<p>d\xC3\xA9j\xC3\xA0 <b>vu</b></p>", "d\xC3\xA9j\xC3\xA0 vu"});
    const auto files = nextExport();
    EXPECT_THAT(files.at("text.html"), HasSubstr("<p>d\xC3\xA9j\xC3\xA0 <b>vu</b></p>"));
    EXPECT_EQ(files.at("text.txt"), "d\xC3\xA9j\xC3\xA0 vu");
}

TEST_P(ContentOfToolkit, aPictureIsExported) {
    agent();
    startReady({GetParam(), "copy-image", picture()});
    const auto files = nextExport();
    EXPECT_TRUE(files.at("image.png").starts_with("\x89PNG\r\n"));
    EXPECT_TRUE(files.contains("image.jpeg")) << "they offer every format that they can write";
}

TEST_P(ContentOfToolkit, filesAreReported) {
    const std::vector<std::string> paths{world_.write("a b%.txt", "a"),
                                         world_.write("\xC3\xA9t\xC3\xA9.txt", "b")};
    agent();
    startReady({GetParam(), "copy-files", paths[0], paths[1]});
    EXPECT_EQ(agent().nextMessage(), announcement(1));
    EXPECT_EQ(agent().nextMessage(), filesEvent(paths, 1));
}

TEST_P(ContentOfToolkit, canBeThePictureThatTheParentSent) {
    const std::string png = contentOfFile(picture());
    EXPECT_EQ(request(agent(), {{"command", "write_image_data"}, {"image_b64", base64Of(png)}}), success(1));
    const std::string pasted = (world_.directory() / "pasted.png").string();
    outputOf({GetParam(), "paste-image", pasted});
    outputOf({"compare-im6.q16", "-metric", "AE", picture(), pasted, "null:"}); // fails if a pixel differs
    EXPECT_TRUE(outputOf({GetParam(), "paste-bytes", "image/png"}) == png);
}

TEST_P(ContentOfToolkit, canBeTheFormatsThatTheParentSent) {
    const std::string html = world_.write("text.html", "<i>\xC3\xA9</i>");
    const std::string text = world_.write("text.txt", "\xC3\xA9");
    EXPECT_EQ(
        request(
            agent(),
            {{"command", "write_files"}, {"kind", "formats"}, {"paths", {html, text}}, {"marker", "here"}}),
        success(1));
    EXPECT_EQ(outputOf({GetParam(), "paste-html"}), "<i>\xC3\xA9</i>") << "without a byte-order mark";
    EXPECT_EQ(outputOf({GetParam(), "paste-text"}), "\xC3\xA9");
}

TEST_P(ContentOfToolkit, canBeTheFilesThatTheParentSent) {
    const std::vector<std::string> paths{world_.write("a b%.txt", "a"),
                                         world_.write("\xC3\xA9t\xC3\xA9.txt", "b")};
    EXPECT_EQ(
        request(agent(), {{"command", "write_files"}, {"kind", "files"}, {"paths", paths}, {"marker", ""}}),
        success(1));
    EXPECT_EQ(outputOf({GetParam(), "paste-files"}), paths[0] + "\n" + paths[1] + "\n");
}

INSTANTIATE_TEST_SUITE_P(Of, ContentOfToolkit, testing::Values(TAVEL_GTK_PEER, TAVEL_QT_PEER),
                         [](const auto& test) {
                             return std::string(test.param).ends_with("gtk-peer") ? "gtk" : "qt";
                         });

class X11Targets : public X11AgentTest {};

TEST_F(X11Targets, ofATextAreItsUsualNamesAndTheMarker) {
    request(agent(), {{"command", "write_text"}, {"text_b64", "aGk"}, {"marker", "from here"}});
    EXPECT_THAT(contentTargets(), ElementsAre("UTF8_STRING", "text/plain;charset=utf-8", "text/plain",
                                              "STRING", "TEXT", originMarkerType));
    EXPECT_EQ(pasteWithXclip("text/plain"), "hi");
    EXPECT_EQ(pasteWithXclip(std::string(originMarkerType)), "from here");
}

TEST_F(X11Targets, areServedThoughTheParentDoesNotRead) {
    AgentProcess& agent = start(x11Options());
    request(agent, {{"command", "write_text"}, {"text_b64", "aGk"}, {"marker", "m"}});
    std::string lines;
    for (std::uint64_t requestID = 0; requestID < 5000; ++requestID)
        lines += pingLine(requestID);
    agent.send(lines);
    waitUntilStalled(agent);
    EXPECT_EQ(pasteWithXclip(), "hi");
}

TEST_F(X11Targets, ofFilesAreThoseOfTheFileManagers) {
    const std::string path = world_.write("a file", "");
    request(agent(),
            {{"command", "write_files"}, {"kind", "files"}, {"paths", {path, path}}, {"marker", "m"}});
    EXPECT_THAT(contentTargets(), ElementsAre("text/uri-list", "x-special/gnome-copied-files",
                                              "x-special/mate-copied-files", originMarkerType));
    const std::string url = "file://" + world_.directory().string() + "/a%20file";
    EXPECT_EQ(pasteWithXclip("text/uri-list"), url + "\r\n" + url + "\r\n");
    EXPECT_EQ(pasteWithXclip("x-special/gnome-copied-files"), "copy\n" + url + "\n" + url);
    EXPECT_EQ(pasteWithXclip("x-special/mate-copied-files"), "copy\n" + url + "\n" + url);
}

} // namespace

} // namespace tavel
