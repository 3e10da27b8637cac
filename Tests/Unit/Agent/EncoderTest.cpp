#include "TavelClipboardAgent/main/Protocol/Encoder.h"

#include "Tests/Unit/Agent/Decoding.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {
namespace {

const std::string notUtf8 = "caf\xE9";

std::string_view withoutLineFeed(std::string_view line) {
    return line.substr(0, line.find('\n'));
}

TEST(Encoder, writesReplies) {
    EXPECT_EQ(encodeMessage(Reply{18'446'744'073'709'551'615U, true, "", 43}),
              "{\"request_id\":18446744073709551615,\"ok\":true,\"reason\":\"\",\"sequence\":43}\n");
    EXPECT_EQ(encodeMessage(Reply{0, false, "Écriture / impossible", 0}),
              "{\"request_id\":0,\"ok\":false,\"reason\":\"Écriture \\/ impossible\",\"sequence\":0}\n");
}

TEST(Encoder, writesAnnouncements) {
    EXPECT_EQ(encodeMessage(event::Announcement{"m", 7}),
              "{\"event\":\"change\",\"kind\":\"unsupported\",\"marker\":\"m\",\"sequence\":7}\n");
}

TEST(Encoder, writesTextInBase64WithoutPaddingAndItsLengthInBytes) {
    EXPECT_EQ(
        encodeMessage(event::TextChange{Bytes::copyOf("???é"), "m", 7}),
        "{\"event\":\"change\",\"text_b64\":\"Pz8\\/w6k\",\"marker\":\"m\",\"bytes\":5,\"sequence\":7}\n");
    EXPECT_EQ(encodeMessage(event::TextChange{{}, "", 7}),
              "{\"event\":\"change\",\"text_b64\":\"\",\"marker\":\"\",\"bytes\":0,\"sequence\":7}\n");
}

TEST(Encoder, writesPaths) {
    EXPECT_EQ(encodeMessage(event::PathsChange{"files", {"/a b", "/é"}, "", 7}),
              "{\"event\":\"change\",\"kind\":\"files\",\"paths\":[\"\\/a b\",\"\\/é\"],\"marker\":\"\","
              "\"sequence\":7}\n");
}

TEST(Encoder, writesTheOtherEvents) {
    EXPECT_EQ(encodeMessage(event::Log{"warning", "trop\ngrand"}),
              "{\"event\":\"log\",\"level\":\"warning\",\"message\":\"trop\\ngrand\"}\n");
    EXPECT_EQ(encodeMessage(event::FileRenamed{9}), "{\"event\":\"file_renamed\",\"sequence\":9}\n");
}

TEST(Encoder, refusesMessagesWithStringsThatAreNotUtf8) {
    EXPECT_EQ(encodeMessage(Reply{1, false, notUtf8, 0}), std::nullopt);
    EXPECT_EQ(encodeMessage(event::Announcement{notUtf8, 0}), std::nullopt);
    EXPECT_EQ(encodeMessage(event::TextChange{Bytes::copyOf("a"), notUtf8, 0}), std::nullopt);
    EXPECT_EQ(encodeMessage(event::PathsChange{"files", {"/a", notUtf8}, "", 0}), std::nullopt);
    EXPECT_EQ(encodeMessage(event::Log{"warning", notUtf8}), std::nullopt);
}

TEST(Encoder, writesCommandsWithoutFields) {
    EXPECT_EQ(encodeCommand(command::Ping{7}), "{\"command\":\"ping\",\"request_id\":7}\n");
    EXPECT_EQ(encodeCommand(command::DiscardPending{8}),
              "{\"command\":\"discard_pending\",\"request_id\":8}\n");
    EXPECT_EQ(encodeCommand(command::Quit{18'446'744'073'709'551'615U}),
              "{\"command\":\"quit\",\"request_id\":18446744073709551615}\n");
}

TEST(Encoder, writesTheFieldsOfCommands) {
    EXPECT_EQ(encodeCommand(command::ConfigureFilePrompt{7, true}),
              "{\"command\":\"configure_file_prompt\",\"rename_prompt\":true,\"request_id\":7}\n");
    EXPECT_EQ(encodeCommand(command::WriteText{7, Bytes::copyOf("???"), "m"}),
              "{\"command\":\"write_text\",\"text_b64\":\"Pz8\\/\",\"marker\":\"m\",\"request_id\":7}\n");
    EXPECT_EQ(encodeCommand(command::WriteImageData{7, Bytes::copyOf("\x89PN")}),
              "{\"command\":\"write_image_data\",\"image_b64\":\"iVBO\",\"request_id\":7}\n");
    EXPECT_EQ(
        encodeCommand(command::WriteFiles{7, "files", {"/a", "/é"}, "m", 41}),
        "{\"command\":\"write_files\",\"kind\":\"files\",\"paths\":[\"\\/a\",\"\\/é\"],\"marker\":\"m\","
        "\"expected_sequence\":41,\"request_id\":7}\n");
}

TEST(Encoder, leavesAbsentFieldsOut) {
    EXPECT_EQ(encodeCommand(command::WriteText{7, std::nullopt, std::nullopt}),
              "{\"command\":\"write_text\",\"request_id\":7}\n");
    EXPECT_EQ(encodeCommand(command::WriteImageData{7, std::nullopt}),
              "{\"command\":\"write_image_data\",\"request_id\":7}\n");
    EXPECT_EQ(encodeCommand(command::WriteFiles{7, std::nullopt, {}, std::nullopt, std::nullopt}),
              "{\"command\":\"write_files\",\"paths\":[],\"request_id\":7}\n");
}

TEST(Encoder, refusesCommandsThatNoLineCanHold) {
    EXPECT_EQ(encodeCommand(command::Unknown{7}), std::nullopt);
    EXPECT_EQ(encodeCommand(command::WriteText{7, Bytes::copyOf("a"), notUtf8}), std::nullopt);
    EXPECT_EQ(encodeCommand(command::WriteFiles{7, "files", {notUtf8}, "m", std::nullopt}), std::nullopt);
}

template <typename Command>
std::optional<Command> decodedAgain(const Command& command) {
    const auto line = encodeCommand(command);
    return line ? decodeLineAs<Command>(withoutLineFeed(*line)) : std::nullopt;
}

TEST(Encoder, writesCommandsThatTheAgentReads) {
    EXPECT_EQ(decodedAgain(command::Ping{UINT64_MAX}).value().requestID, UINT64_MAX);
    EXPECT_EQ(decodedAgain(command::DiscardPending{1}).value().requestID, 1U);
    EXPECT_EQ(decodedAgain(command::Quit{2}).value().requestID, 2U);
    EXPECT_TRUE(decodedAgain(command::ConfigureFilePrompt{3, true}).value().renamePrompt);
    EXPECT_FALSE(decodedAgain(command::ConfigureFilePrompt{3, false}).value().renamePrompt);

    const auto text = decodedAgain(command::WriteText{4, Bytes::copyOf("???"), "m \"é\"\n\\"});
    ASSERT_TRUE(text && text->text);
    EXPECT_EQ(text->requestID, 4U);
    EXPECT_EQ(text->text->view(), "???");
    EXPECT_EQ(text->marker, "m \"é\"\n\\");

    const auto image = decodedAgain(command::WriteImageData{5, Bytes::copyOf("\x89PN")});
    ASSERT_TRUE(image && image->image);
    EXPECT_EQ(image->image->view(), "\x89PN");

    const auto files = decodedAgain(command::WriteFiles{6, "formats", {"/a/é", "/b\t"}, "", UINT64_MAX});
    ASSERT_TRUE(files);
    EXPECT_EQ(files->kind, "formats");
    EXPECT_EQ(files->paths, (std::vector<std::string>{"/a/é", "/b\t"}));
    EXPECT_EQ(files->marker, "");
    EXPECT_EQ(files->expectedSequence, UINT64_MAX);
}

TEST(Encoder, keepsAbsentFieldsAbsentForTheAgent) {
    const auto text = decodedAgain(command::WriteText{1, std::nullopt, std::nullopt});
    ASSERT_TRUE(text);
    EXPECT_FALSE(text->text);
    EXPECT_EQ(text->marker, std::nullopt);
    const auto files = decodedAgain(command::WriteFiles{1, std::nullopt, {}, std::nullopt, std::nullopt});
    ASSERT_TRUE(files);
    EXPECT_EQ(files->kind, std::nullopt);
    EXPECT_EQ(files->paths, std::vector<std::string>());
    EXPECT_EQ(files->marker, std::nullopt);
    EXPECT_EQ(files->expectedSequence, std::nullopt);
}

} // namespace
} // namespace tavel
