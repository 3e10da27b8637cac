#include "Console/SamplePicture.h"
#include "ImageHeaders/ImageHeader.h"
#include "Support/Base64.h"
#include "Tests/Tools/ConsoleTest.h"
#include "Tests/Unit/Fixtures/PrintJson.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace tavel {

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

constexpr const char* markerType = "com.corvelle.tavelbridge.clipboard-origin-v1";

/// Pictures and sets of formats between the console, the agent and another application.
class ConsolePictureTest : public ConsoleTest {
protected:
    /// The agent reports what is copied from here on.
    static void awaitAgent(RunningTool& console) {
        console.send("ping\n");
        console.waitForOutput("done (#0)\n");
    }

    static std::string contentOf(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
};

TEST_F(ConsolePictureTest, SendsAPictureAsAFile) {
    world_.write("a.png", samplePicture());
    EXPECT_EQ(output("image a.png\n"), "[1] image: done (#1)\n");
    EXPECT_EQ(pasteboard({"paste", "--type", "png"}), samplePicture());
    EXPECT_EQ(pasteboard({"paste", "--type", markerType}), "tavel-console");
}

TEST_F(ConsolePictureTest, SendsThePicturesBytes) {
    world_.write("a.png", samplePicture());
    EXPECT_EQ(output("image-data a.png\n"), "[1] image-data: done (#1)\n");
    EXPECT_THAT(pasteboard({"paste", "--type", "png"}), StartsWith("\x89PNG"));
    EXPECT_EQ(pasteboard({"types"}), "public.png\n"); // without a marker
}

TEST_F(ConsolePictureTest, SendsPicturesOfOtherFormats) {
    constexpr std::string_view onePixel("GIF89a\1\0\1\0\x80\0\0\xFF\xFF\xFF\0\0\0"
                                        ",\0\0\0\0\1\0\1\0\0\2\2\x44\1\0;",
                                        35);
    world_.write("a.gif", onePixel);
    EXPECT_EQ(output("image-data a.gif\n"), "[1] image-data: done (#1)\n");
    const auto header = readImageHeader(pasteboard({"paste", "--type", "png"}));
    ASSERT_TRUE(header);
    EXPECT_EQ(header->typeIdentifier, "public.png");
    EXPECT_EQ(header->width, 1);
    EXPECT_EQ(header->height, 1);
}

TEST_F(ConsolePictureTest, SendsFormats) {
    world_.write("text.html", "<p>");
    world_.write("text.txt", "hi");
    world_.write("image.png", samplePicture());
    EXPECT_EQ(output("formats text.html text.txt image.png\n"), "[1] formats: done (#1)\n");
    EXPECT_THAT(pasteboard({"paste", "--type", "html"}), EndsWith("<p>"));
    EXPECT_EQ(pasteboard({"paste"}), "hi");
    EXPECT_EQ(pasteboard({"paste", "--type", "png"}), samplePicture());
    EXPECT_EQ(pasteboard({"paste", "--type", markerType}), "tavel-console");
}

TEST_F(ConsolePictureTest, TellsWhatTheAgentRefuses) {
    world_.write("nonsense.png", "nonsense");
    EXPECT_EQ(output("image nonsense.png\nimage-data nonsense.png\nformats nonsense.png\n"),
              "[1] image: failed: Image clipboard invalide ou trop grande (#0)\n"
              "[2] image-data: failed: Image historique invalide (#0)\n"
              "[3] formats: failed: Formats clipboard invalides (#0)\n");
}

TEST_F(ConsolePictureTest, GoesOnAfterFilesThatCannotBeRead) {
    const std::string gone =
        "Cannot read " + (world_.directory() / "gone").string() + ": No such file or directory\n";
    EXPECT_EQ(output("image gone\nimage-data gone\nformats gone\nping\n"),
              gone + gone + gone + "[1] ping: done (#0)\n");
}

TEST_F(ConsolePictureTest, SendsEveryByteOfALargePicture) {
    const std::string picture = allBytes(5'000'001);
    world_.write("a", picture);
    const std::string agent = world_.writeScript(
        "agent", "head -n 1 > line\necho '{\"request_id\":1,\"ok\":true,\"reason\":\"\",\"sequence\":4}'\n"
                 "while read line; do :; done\n");
    const ToolResult result = runTool(world_, {TAVEL_CONSOLE, "--agent", agent}, "image-data a\n");
    EXPECT_EQ(result.output, "[1] image-data: done (#4)\n");
    const auto sent = nlohmann::json::parse(contentOf((world_.directory() / "line").string()));
    const auto received = decodeBase64(sent["image_b64"].get<std::string>());
    ASSERT_TRUE(received);
    EXPECT_TRUE(received->view() == picture);
}

TEST_F(ConsolePictureTest, ShowsPicturesThatOthersCopy) {
    world_.write("a.PNG", samplePicture());
    RunningTool console(world_, {TAVEL_CONSOLE});
    awaitAgent(console);
    pasteboard({"copy", "a.PNG"});
    EXPECT_EQ(console.waitForOutput(": "), "clipboard changed (#1)\npicture, 24 × 16 pixels, 96 bytes: ");
    std::string path = console.waitForOutput("\n");
    path.pop_back();
    EXPECT_THAT(path, AllOf(StartsWith(world_.temporaryDirectory().string()), EndsWith(".png")));
    EXPECT_EQ(contentOf(path), samplePicture());
    console.closeInput();
    EXPECT_EQ(console.finish().status, 0);
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(ConsolePictureTest, ShowsFormatsThatOthersCopy) {
    world_.write("a.html", "<p>hello");
    world_.write("a.txt", "hello");
    world_.write("a.png", samplePicture());
    RunningTool console(world_, {TAVEL_CONSOLE});
    awaitAgent(console);
    pasteboard({"set", "text=a.txt", "png=a.png", "html=a.html"});
    EXPECT_THAT(console.waitForOutput("text.txt\n"),
                MatchesRegex("clipboard changed \\(#1\\)\n"
                             "3 formats:\n"
                             "  PNG picture, 24 × 16 pixels, 96 bytes: [^\n]*/image.png\n"
                             "  HTML, 8 bytes: [^\n]*/text.html\n"
                             "  plain text, 5 bytes: [^\n]*/text.txt\n"));
    console.closeInput();
    EXPECT_EQ(console.finish().status, 0);
}

TEST_F(ConsolePictureTest, ShowsTheAgentsWarnings) {
    RunningTool console(world_, {TAVEL_CONSOLE});
    awaitAgent(console);
    pasteboard({"copy", "--type", "png"}, "nonsense");
    EXPECT_EQ(console.waitForOutput("mégapixels)\n"),
              "clipboard changed (#1)\nwarning: Image ignorée (limite 128 Mio / 32 mégapixels)\n");
    pasteboard({"copy", "--type", "gif"}, "nonsense");
    EXPECT_THAT(console.waitForOutput(".\n"), HasSubstr("valide (com.compuserve.gif).\n"));
    console.closeInput();
    EXPECT_EQ(console.finish().status, 0);
}

} // namespace

} // namespace tavel
