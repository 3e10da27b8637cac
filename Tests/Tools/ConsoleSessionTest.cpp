#include "Tests/Tools/ConsoleTest.h"
#include "Tests/Unit/Fixtures/PrintJson.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <sstream>

namespace tavel {

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

class ConsoleSessionTest : public ConsoleTest {
protected:
    bool isTidy() const { return std::filesystem::is_empty(world_.temporaryDirectory()); }
};

TEST_F(ConsoleSessionTest, EndsAtOnceWithoutInput) {
    EXPECT_EQ(output(""), "");
    EXPECT_TRUE(isTidy());
}

TEST_F(ConsoleSessionTest, SendsText) {
    EXPECT_EQ(output("text Bonjour à tous\n"), "[1] text: done (#1)\n");
    EXPECT_EQ(pasteboard({"paste"}), "Bonjour à tous");
    EXPECT_EQ(pasteboard({"paste", "--type", "com.corvelle.tavelbridge.clipboard-origin-v1"}),
              "tavel-console");
}

TEST_F(ConsoleSessionTest, SendsFiles) {
    const std::string first = world_.write("a b.txt", "");
    const std::string second = world_.write("c.txt", "");
    EXPECT_EQ(output("files 'a b.txt' ~/c.txt"),
              "[1] files: done (#1)\n"); // the home directory is the test's directory
    EXPECT_EQ(pasteboard({"paste-files"}), first + "\n" + second + "\n");
}

TEST_F(ConsoleSessionTest, GoesOnAfterFailures) {
    EXPECT_EQ(output("files gone\nbogus\n\nprompt off\ntext x\n"),
              "[1] files: failed: Fichiers clipboard invalides (#0)\n"
              "Unknown command \"bogus\". Type help for the list.\n"
              "[2] prompt: done (#0)\n"
              "[3] text: done (#1)\n");
}

TEST_F(ConsoleSessionTest, AnswersInTheOrderOfTheCommands) {
    std::string input;
    std::string expected;
    for (int i = 1; i <= 200; ++i) {
        input += "ping\nping twice\n";
        expected += "[" + std::to_string(i) + "] ping: done (#0)\nUsage: ping\n";
    }
    EXPECT_EQ(output(input), expected);
}

TEST_F(ConsoleSessionTest, QuitsBeforeTheEndOfInput) {
    EXPECT_EQ(output("discard\nquit\nping\n"), "[1] discard: done (#0)\n[2] quit: done (#0)\n");
    RunningTool console(world_, {TAVEL_CONSOLE});
    console.send("quit\n");
    EXPECT_EQ(console.finish().status, 0); // though its input is still open
    EXPECT_TRUE(isTidy());
}

TEST_F(ConsoleSessionTest, PrintsHelp) {
    EXPECT_THAT(output("help\n"), HasSubstr("files PATH..."));
    EXPECT_THAT(output("", {"--help"}), HasSubstr("--demo"));
}

TEST_F(ConsoleSessionTest, PrintsItsVersion) {
    EXPECT_EQ(output("", {"--version"}), "tavel-console " TAVEL_VERSION "\n");
}

TEST_F(ConsoleSessionTest, TakesTextOfTheGreatestSize) {
    const std::string text(4'194'304, 'x');
    EXPECT_EQ(output("text " + text + "\ntext " + text + "y\n"),
              "[1] text: done (#1)\n[2] text: failed: Texte clipboard invalide (#1)\n");
    EXPECT_TRUE(pasteboard({"paste"}) == text);
}

TEST_F(ConsoleSessionTest, ShowsWhatOthersCopy) {
    const std::string file = world_.write("f", "");
    RunningTool console(world_, {TAVEL_CONSOLE});
    console.send("ping\n");
    console.waitForOutput("done (#0)\n"); // the agent reports what is copied from here on
    pasteboard({"copy"}, "a\x1b[31m\nb");
    EXPECT_EQ(console.waitForOutput("b\"\n"), "clipboard changed (#1)\ntext, 8 bytes: \"a\\e[31m\\nb\"\n");
    pasteboard({"copy-files", "f"});
    EXPECT_EQ(console.waitForOutput("/f\n"), "clipboard changed (#2)\n1 file:\n  " + file + "\n");
    pasteboard({"copy"}, std::string(4'194'305, 'x'));
    EXPECT_EQ(console.waitForOutput("Mio)\n"),
              "clipboard changed (#3)\nwarning: Texte presse-papiers ignoré (>4 Mio)\n");
    console.closeInput();
    EXPECT_EQ(console.finish().status, 0);
}

TEST_F(ConsoleSessionTest, ShowsWhereContentComesFrom) {
    const std::string marker = world_.write("marker", "somebody");
    RunningTool console(world_, {TAVEL_CONSOLE});
    console.send("ping\n");
    console.waitForOutput("done (#0)\n");
    pasteboard({"set", "text=-", "com.corvelle.tavelbridge.clipboard-origin-v1=" + marker}, "hi");
    EXPECT_EQ(console.waitForOutput("hi\"\n"),
              "clipboard changed (#1), sent by \"somebody\"\ntext, 2 bytes: \"hi\"\n");
}

TEST_F(ConsoleSessionTest, WorksOnANamedPasteboard) {
    output("text named\n", {"--pasteboard", "one"});
    EXPECT_EQ(pasteboard({"--pasteboard", "one", "paste"}), "named");
    EXPECT_EQ(pasteboard({"count"}), "0\n");
}

TEST_F(ConsoleSessionTest, ShowsTheProtocolRaw) {
    const std::string lines = output("text hé\nbogus\nfiles gone\n", {"--raw"});
    std::istringstream stream(lines);
    std::vector<std::string> all;
    for (std::string line; std::getline(stream, line);)
        all.push_back(line);
    ASSERT_EQ(all.size(), 5U) << lines;

    const auto parsed = [&](std::size_t index, std::string_view direction) {
        EXPECT_EQ(all[index].substr(0, 2), direction);
        return nlohmann::json::parse(all[index].substr(2));
    };
    EXPECT_EQ(parsed(0, "> "),
              nlohmann::json::parse(R"({"command":"write_text","request_id":1,"text_b64":"aMOp",
                                                         "marker":"tavel-console"})"));
    EXPECT_EQ(parsed(1, "< "),
              nlohmann::json::parse(R"({"request_id":1,"ok":true,"reason":"","sequence":1})"));
    EXPECT_EQ(all[2], "Unknown command \"bogus\". Type help for the list.");
    EXPECT_EQ(parsed(3, "> ")["request_id"], 2);
    EXPECT_EQ(parsed(4, "< ")["reason"], "Fichiers clipboard invalides");
}

TEST_F(ConsoleSessionTest, SendsRawLines) {
    EXPECT_EQ(output("{\"command\":\"ping\",\"request_id\":700}\n{nonsense\nping\n", {"--raw"}),
              "> {\"command\":\"ping\",\"request_id\":700}\n"
              "< {\"request_id\":700,\"ok\":true,\"reason\":\"\",\"sequence\":0}\n"
              "> {nonsense\n"
              "> {\"command\":\"ping\",\"request_id\":1}\n"
              "< {\"request_id\":1,\"ok\":true,\"reason\":\"\",\"sequence\":0}\n");
    EXPECT_THAT(output("{\"command\":\"ping\"}\n"),
                HasSubstr("Unknown command")); // without --raw it is a mistake
}

TEST_F(ConsoleSessionTest, EndsCleanlyOnSignals) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        RunningTool console(world_, {TAVEL_CONSOLE});
        console.send("ping\n");
        console.waitForOutput("done");
        EXPECT_FALSE(isTidy()); // the agent's export directory
        console.sendSignal(number);
        const ToolResult result = console.finish();
        EXPECT_EQ(result.status, 0);
        EXPECT_THAT(result.errors, IsEmpty());
        EXPECT_TRUE(isTidy());
    }
}

TEST_F(ConsoleSessionTest, FindsItsAgentThroughALink) {
    std::filesystem::create_symlink(TAVEL_CONSOLE, world_.directory() / "link");
    const ToolResult result = runTool(world_, {(world_.directory() / "link").string()}, "ping\n");
    EXPECT_EQ(result.output, "[1] ping: done (#0)\n");
    EXPECT_EQ(result.errors, "");
}

TEST_F(ConsoleSessionTest, TellsUsageMistakesWithStatus2) {
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"extra"},
                                               {"--bogus"},
                                               {"--agent"},
                                               {"--timeout", "0"},
                                               {"--demo", "--raw"},
                                               {"--demo", "--pasteboard", "x"}}) {
        const ToolResult result = session("ping\n", arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors, EndsWith("\nRun tavel-console --help for more information.\n"));
    }
}

} // namespace

} // namespace tavel
