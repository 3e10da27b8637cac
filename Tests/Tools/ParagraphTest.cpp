#include "Console/Paragraph.h"

#include "Console/SamplePicture.h"
#include "TavelClipboardAgent/main/Protocol/MessageDecoder.h"
#include "Tests/Tools/World.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavel {

namespace {

using testing::EndsWith;
using testing::HasSubstr;

std::string described(std::string_view line, std::string_view requestName = "") {
    const auto message = decodeMessage(line);
    return message ? describeMessage(*message, requestName).text : "no message";
}

TEST(Paragraph, TellsRepliesWithTheirRequest) {
    EXPECT_EQ(described(R"({"request_id":3,"ok":true,"reason":"","sequence":43})", "text"),
              "[3] text: done (#43)");
    EXPECT_EQ(described(R"({"request_id":3,"ok":true,"reason":"","sequence":43})"), "[3]: done (#43)");
    EXPECT_EQ(described(R"({"request_id":4,"ok":false,"reason":"Non\u001b[m","sequence":0})", "files"),
              "[4] files: failed: Non\\e[m (#0)");
}

TEST(Paragraph, TellsOfChanges) {
    EXPECT_EQ(described(R"({"event":"change","kind":"unsupported","marker":"","sequence":43})"),
              "clipboard changed (#43)");
    EXPECT_EQ(described(R"({"event":"change","kind":"unsupported","marker":"tavel-console","sequence":43})"),
              "clipboard changed (#43), sent by \"tavel-console\"");
    EXPECT_EQ(described(R"({"event":"change","text_b64":"YRtb","marker":"","bytes":3,"sequence":43})"),
              "text, 3 bytes: \"a\\e[\"");
    EXPECT_EQ(described(R"({"event":"change","kind":"files","paths":["/a\nb"],"marker":"","sequence":43})"),
              "1 file:\n  /a\\nb");
}

TEST(Paragraph, TellsWhatExportsHold) {
    const World world;
    const std::string picture = world.write("image.png", samplePicture());
    const std::string page = world.write("text.html", std::string(2048, 'x'));
    const std::string list = R"("paths":[")" + picture + R"(",")" + page + R"("],"marker":"","sequence":1})";
    EXPECT_EQ(described(R"({"event":"change","kind":"image","paths":[")" + picture +
                        R"("],"marker":"","sequence":1})"),
              "picture, 24 × 16 pixels, 96 bytes: " + picture);
    EXPECT_EQ(described(R"({"event":"change","kind":"formats",)" + list),
              "2 formats:\n  PNG picture, 24 × 16 pixels, 96 bytes: " + picture +
                  "\n  HTML, 2.0 KiB: " + page);
    // Only exported files are described.
    EXPECT_EQ(described(R"({"event":"change","kind":"files",)" + list),
              "2 files:\n  " + picture + "\n  " + page);
    EXPECT_EQ(described(R"({"event":"change","kind":"so\nunds",)" + list),
              "so\\nunds:\n  " + picture + "\n  " + page);
}

TEST(Paragraph, ShortensLongSelections) {
    std::string list = R"("/1")";
    for (int i = 2; i <= 10'000; ++i)
        list += ",\"/" + std::to_string(i) + '"';
    const std::string text =
        described(R"({"event":"change","kind":"files","paths":[)" + list + R"(],"marker":"","sequence":1})");
    EXPECT_THAT(text, HasSubstr("10000 files:\n  /1\n"));
    EXPECT_THAT(text, EndsWith("\n  /20\n  ... and 9980 more"));
}

TEST(Paragraph, TellsWarningsAndPastedFiles) {
    EXPECT_EQ(described(R"({"event":"log","level":"warning","message":"trop\tgrand"})"),
              "warning: trop\\tgrand");
    EXPECT_EQ(described(R"({"event":"file_renamed","sequence":9})"), "the content was pasted as a file (#9)");
    EXPECT_EQ(describeUnintelligible("\x1b?").text, "the agent said something unintelligible: \"\\e?\"");
}

TEST(Paragraph, IsColoredOnlyWhereThatIsWanted) {
    EXPECT_EQ(render({"a", Tone::failure}, false), "a\n");
    EXPECT_EQ(render({"a", Tone::normal}, true), "a\n");
    EXPECT_EQ(render({"a", Tone::dim}, true), "\x1b[2ma\x1b[0m\n");
    EXPECT_NE(render({"a", Tone::failure}, true), render({"a", Tone::warning}, true));
}

} // namespace

} // namespace tavel
