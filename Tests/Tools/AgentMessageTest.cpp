#include "Console/AgentMessage.h"

#include "Console/Paragraph.h"
#include "Console/SamplePicture.h"
#include "Tests/Tools/World.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavel {

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

std::string described(std::string_view line, std::string_view requestName = "") {
    return describeMessage(decodeAgentMessage(line), requestName).text;
}

bool isUnintelligible(std::string_view line) {
    const AgentMessage message = decodeAgentMessage(line);
    const auto* const unintelligible = std::get_if<message::Unintelligible>(&message);
    return unintelligible != nullptr && unintelligible->line == line;
}

TEST(AgentMessage, DecodesAReply) {
    const AgentMessage message = decodeAgentMessage(
        R"({"request_id":18446744073709551615,"ok":false,"reason":"Écriture \/ impossible","sequence":43})");
    const auto& reply = std::get<message::Reply>(message);
    EXPECT_EQ(reply.requestID, 18'446'744'073'709'551'615U);
    EXPECT_FALSE(reply.ok);
    EXPECT_EQ(reply.reason, "Écriture / impossible");
    EXPECT_EQ(reply.sequence, 43U);
}

TEST(AgentMessage, DecodesAnAnnouncement) {
    const AgentMessage message =
        decodeAgentMessage(R"({"event":"change","kind":"unsupported","marker":"m","sequence":7})");
    EXPECT_EQ(std::get<message::Announcement>(message).marker, "m");
    EXPECT_EQ(std::get<message::Announcement>(message).sequence, 7U);
}

TEST(AgentMessage, DecodesTextWithoutPadding) {
    const AgentMessage message =
        decodeAgentMessage(R"({"event":"change","text_b64":"YQ","marker":"","bytes":1,"sequence":7})");
    EXPECT_EQ(std::get<message::TextChange>(message).text, "a");
    EXPECT_EQ(std::get<message::TextChange>(message).sequence, 7U);
}

TEST(AgentMessage, DecodesPaths) {
    const AgentMessage message = decodeAgentMessage(
        R"({"event":"change","kind":"files","paths":["\/a b","\/é"],"marker":"","sequence":7})");
    EXPECT_EQ(std::get<message::PathsChange>(message).kind, "files");
    EXPECT_THAT(std::get<message::PathsChange>(message).paths, ElementsAre("/a b", "/é"));
}

TEST(AgentMessage, DecodesTheOtherEvents) {
    const AgentMessage log =
        decodeAgentMessage(R"({"event":"log","level":"warning","message":"trop grand"})");
    EXPECT_EQ(std::get<message::Log>(log).level, "warning");
    EXPECT_EQ(std::get<message::Log>(log).text, "trop grand");
    const AgentMessage renamed = decodeAgentMessage(R"({"event":"file_renamed","sequence":9})");
    EXPECT_EQ(std::get<message::FileRenamed>(renamed).sequence, 9U);
}

TEST(AgentMessage, KeepsWhatItDoesNotUnderstand) {
    EXPECT_TRUE(isUnintelligible(""));
    EXPECT_TRUE(isUnintelligible("not JSON"));
    EXPECT_TRUE(isUnintelligible("[]"));
    EXPECT_TRUE(isUnintelligible(R"({"event":"surprise"})"));
    EXPECT_TRUE(isUnintelligible(R"({"event":"change","kind":"files","marker":"","sequence":7})"));
    EXPECT_TRUE(
        isUnintelligible(R"({"event":"change","kind":"files","paths":[1],"marker":"","sequence":7})"));
    EXPECT_TRUE(isUnintelligible(R"({"event":"change","text_b64":"!","marker":"","sequence":7})"));
    EXPECT_TRUE(isUnintelligible(R"({"event":"change","kind":"unsupported","marker":"","sequence":-1})"));
    EXPECT_TRUE(isUnintelligible(R"({"request_id":1,"ok":1,"reason":"","sequence":1})"));
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
    // Other people's files are only named, and so is what nobody knows.
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
    EXPECT_EQ(described("\x1b?"), "the agent said something unintelligible: \"\\e?\"");
}

TEST(Paragraph, IsColoredOnlyWhereThatIsWanted) {
    EXPECT_EQ(render({"a", Tone::failure}, false), "a\n");
    EXPECT_EQ(render({"a", Tone::normal}, true), "a\n");
    EXPECT_EQ(render({"a", Tone::dim}, true), "\x1b[2ma\x1b[0m\n");
    EXPECT_NE(render({"a", Tone::failure}, true), render({"a", Tone::warning}, true));
}

} // namespace

} // namespace tavel
