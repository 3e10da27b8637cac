#include "Console/HumanCommand.h"

#include "Tests/Tools/Wishes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavel {

namespace {

using nlohmann::json;
using testing::HasSubstr;

Wish wishFor(std::string_view line) {
    return readHumanCommand(line, {"/house/here", "/home/me"});
}

json requestFor(std::string_view line) {
    return requestIn(wishFor(line));
}

std::string mistakeFor(std::string_view line) {
    return mistakeIn(wishFor(line));
}

json pathsOf(std::string_view line) {
    return requestFor(line).value("paths", json());
}

TEST(HumanCommand, MakesTheRequestsWithoutFields) {
    EXPECT_EQ(requestFor("ping"), json({{"command", "ping"}}));
    EXPECT_EQ(requestFor("  ping  "), json({{"command", "ping"}}));
    EXPECT_EQ(requestFor("discard"), json({{"command", "discard_pending"}}));
    EXPECT_EQ(requestFor("quit"), json({{"command", "quit"}}));
}

TEST(HumanCommand, NamesRequestsByTheWordThatWasTyped) {
    EXPECT_EQ(std::get<wish::Request>(wishFor("  discard ")).name, "discard");
    EXPECT_EQ(std::get<wish::Request>(wishFor("prompt on")).name, "prompt");
    EXPECT_EQ(std::get<wish::Request>(wishFor("files a")).name, "files");
}

TEST(HumanCommand, SendsTheRestOfTheLineAsText) {
    EXPECT_EQ(requestFor("text Bonjour"),
              json({{"command", "write_text"}, {"text_b64", "Qm9uam91cg"}, {"marker", "tavel-console"}}));
    EXPECT_EQ(requestFor("text  a 'b' "), json({{"command", "write_text"},
                                                {"text_b64", "IGEgJ2InIA"}, // " a 'b' "
                                                {"marker", "tavel-console"}}));
    EXPECT_EQ(requestFor("text ???")["text_b64"], "Pz8/");
}

TEST(HumanCommand, SendsPathsOfFiles) {
    EXPECT_EQ(requestFor("files a.txt"), json({{"command", "write_files"},
                                               {"kind", "files"},
                                               {"paths", {"/house/here/a.txt"}},
                                               {"marker", "tavel-console"}}));
}

TEST(HumanCommand, MakesPathsAbsolute) {
    EXPECT_EQ(pathsOf("files /a/b ./c ../d e/../f"),
              json({"/a/b", "/house/here/c", "/house/d", "/house/here/f"}));
    EXPECT_EQ(pathsOf("files ~/x ~ ./~ a~"),
              json({"/home/me/x", "/home/me/", "/house/here/~", "/house/here/a~"}));
}

TEST(HumanCommand, UnderstandsTheShellsQuoting) {
    EXPECT_EQ(pathsOf(R"(files "a b" c\ d 'e"f' g"h"i)"),
              json({"/house/here/a b", "/house/here/c d", "/house/here/e\"f", "/house/here/ghi"}));
    EXPECT_EQ(pathsOf("files été.txt"), json({"/house/here/été.txt"}));
}

TEST(HumanCommand, SwitchesThePrompt) {
    EXPECT_EQ(requestFor("prompt on"), json({{"command", "configure_file_prompt"}, {"rename_prompt", true}}));
    EXPECT_EQ(requestFor("prompt  off "),
              json({{"command", "configure_file_prompt"}, {"rename_prompt", false}}));
    EXPECT_EQ(mistakeFor("prompt"), "Usage: prompt on|off");
    EXPECT_EQ(mistakeFor("prompt maybe"), "Usage: prompt on|off");
}

TEST(HumanCommand, ExplainsWhatIsMissingOrTooMuch) {
    EXPECT_EQ(mistakeFor("text"), "Usage: text TEXT");
    EXPECT_EQ(mistakeFor("text "), "Usage: text TEXT");
    EXPECT_EQ(mistakeFor("files"), "Usage: files PATH...");
    EXPECT_EQ(mistakeFor("files # only a comment"), "Usage: files PATH...");
    EXPECT_EQ(mistakeFor("image a b"), "Usage: image PATH");
    EXPECT_EQ(mistakeFor("image-data"), "Usage: image-data PATH");
    EXPECT_EQ(mistakeFor("image-data a b"), "Usage: image-data PATH");
    EXPECT_EQ(mistakeFor("formats  "), "Usage: formats PATH...");
    EXPECT_EQ(mistakeFor("ping twice"), "Usage: ping");
    EXPECT_EQ(mistakeFor("quit now"), "Usage: quit");
}

TEST(HumanCommand, ExplainsPathsThatCannotBeSent) {
    EXPECT_THAT(mistakeFor("files 'a"), HasSubstr("quotation mark"));
    EXPECT_THAT(mistakeFor("files a\xFF"), HasSubstr("UTF-8"));
    EXPECT_THAT(mistakeFor(std::string_view("files a\0b", 9)), HasSubstr("zero byte"));
}

TEST(HumanCommand, PointsToHelpForUnknownCommands) {
    EXPECT_EQ(mistakeFor("bogus x"), "Unknown command \"bogus\". Type help for the list.");
    EXPECT_EQ(mistakeFor("Ping"), "Unknown command \"Ping\". Type help for the list.");
    EXPECT_EQ(mistakeFor("\x1b[A"), "Unknown command \"\\e[A\". Type help for the list.");
    EXPECT_EQ(mistakeFor("texture"), "Unknown command \"texture\". Type help for the list.");
}

TEST(HumanCommand, LetsEmptyLinesPass) {
    EXPECT_TRUE(std::holds_alternative<wish::Nothing>(wishFor("")));
    EXPECT_TRUE(std::holds_alternative<wish::Nothing>(wishFor(" \t ")));
}

TEST(HumanCommand, HelpNamesEveryCommand) {
    EXPECT_TRUE(std::holds_alternative<wish::Help>(wishFor("help")));
    for (const char* const name : {"text TEXT", "files PATH", "image PATH", "image-data PATH", "formats PATH",
                                   "ping ", "discard ", "prompt on|off", "quit ", "help "})
        EXPECT_THAT(humanCommandHelp(), HasSubstr(name));
}

} // namespace

} // namespace tavel
