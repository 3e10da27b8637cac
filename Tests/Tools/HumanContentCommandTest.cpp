#include "Console/HumanCommand.h"
#include "Tests/Tools/Wishes.h"
#include "Tests/Tools/World.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

namespace tavel {

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;

/// The commands that need existing files.
class HumanContentCommand : public testing::Test {
protected:
    Wish wishFor(std::string_view line) const {
        return readHumanCommand(line, {world_.directory(), world_.directory()});
    }

    json requestFor(std::string_view line) const { return requestIn(wishFor(line)); }

    std::string mistakeFor(std::string_view line) const { return mistakeIn(wishFor(line)); }

    std::string inWorld(const std::string& name) const { return (world_.directory() / name).string(); }

    World world_;
};

TEST_F(HumanContentCommand, SendsThePathOfAnImage) {
    const std::string path = world_.write("a b.png", "x");
    EXPECT_EQ(
        requestFor("image 'a b.png'"),
        json(
            {{"command", "write_files"}, {"kind", "image"}, {"paths", {path}}, {"marker", "tavel-console"}}));
}

TEST_F(HumanContentCommand, SendsThePathsOfFormats) {
    const std::string page = world_.write("text.html", "x");
    const std::string text = world_.write("text.txt", "x");
    EXPECT_EQ(requestFor("formats text.html ~/text.txt"), json({{"command", "write_files"},
                                                                {"kind", "formats"},
                                                                {"paths", {page, text}},
                                                                {"marker", "tavel-console"}}));
}

TEST_F(HumanContentCommand, SendsTheBytesOfAnImageWithoutAMarker) {
    world_.write("a.jpg", "???\xFF");
    EXPECT_EQ(requestFor("image-data a.jpg"),
              json({{"command", "write_image_data"}, {"image_b64", "Pz8//w"}}));
    EXPECT_EQ(std::get<wish::Request>(wishFor("image-data a.jpg")).name, "image-data");
}

TEST_F(HumanContentCommand, LeavesTheJudgementOfContentToTheAgent) {
    world_.write("empty", "");
    EXPECT_EQ(requestFor("image empty")["kind"], "image");
    EXPECT_EQ(requestFor("image-data empty")["image_b64"], "");
    EXPECT_EQ(requestFor("formats empty empty")["paths"].size(), 2U);
}

TEST_F(HumanContentCommand, ExplainsFilesThatCannotBeRead) {
    world_.write("there", "x");
    std::filesystem::create_directory(inWorld("d"));
    const std::string gone = "Cannot read " + inWorld("gone") + ": No such file or directory";
    EXPECT_EQ(mistakeFor("image gone"), gone);
    EXPECT_EQ(mistakeFor("image-data gone"), gone);
    EXPECT_EQ(mistakeFor("formats there gone"), gone);
    EXPECT_EQ(mistakeFor("image d"), "Cannot read " + inWorld("d") + ": Is a directory");
    EXPECT_EQ(mistakeFor("image 'a\x1b'"), "Cannot read " + inWorld("a\\e") + ": No such file or directory");
}

TEST_F(HumanContentCommand, DoesNotWaitForWhatMayNeverBeWritten) {
    ASSERT_EQ(mkfifo(inWorld("fifo").c_str(), 0600), 0);
    EXPECT_THAT(mistakeFor("image fifo"), StartsWith("Cannot read "));
    EXPECT_THAT(mistakeFor("image-data fifo"), StartsWith("Cannot read "));
}

TEST_F(HumanContentCommand, SendsNoPathThatIsNotUtf8) {
    world_.write("caf\xE9", "x");
    EXPECT_THAT(mistakeFor("image caf\xE9"), HasSubstr("UTF-8"));
    EXPECT_EQ(requestFor("image-data caf\xE9")["image_b64"], "eA"); // the path is not sent
}

TEST_F(HumanContentCommand, SendsNoImageThatFillsTheMemory) {
    std::filesystem::resize_file(world_.write("huge", ""), 256 * 1024 * 1024 + 1);
    EXPECT_EQ(mistakeFor("image-data huge"),
              inWorld("huge") + " has more than 256.0 MiB, which is too much to send.");
    EXPECT_EQ(requestFor("image huge")["kind"], "image"); // the agent reads the file itself
}

} // namespace

} // namespace tavel
