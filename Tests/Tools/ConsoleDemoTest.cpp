#include "Tests/Tools/RunningTool.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string_view>

namespace tavel {

namespace {

using testing::EndsWith;
using testing::HasSubstr;

/// Removes the text between each `begin` and the next character of `ends`.
void removeBehind(std::string& text, std::string_view begin, const char* ends) {
    for (std::size_t at = text.find(begin); at != std::string::npos; at = text.find(begin, at + 1)) {
        const std::size_t from = at + begin.size();
        text.erase(from, text.find_first_of(ends, from) - from);
    }
}

/// Removes what differs between runs: change counts and the names of temporary files.
std::string withoutVaryingParts(std::string text) {
    removeBehind(text, "#", ")");
    removeBehind(text, "/tavel-console-", "/");
    removeBehind(text, "/tavel-clipboard-", "\n");
    return text;
}

class ConsoleDemoTest : public testing::Test {
protected:
    ToolResult demo(std::vector<std::string> arguments = {}) const {
        arguments.insert(arguments.begin(), {TAVEL_CONSOLE, "--demo", "--timeout", "5"});
        return runTool(world_, arguments);
    }

    /// The real agent, whose output the script changes.
    std::string distortedAgent(const std::string& distortion) const {
        const std::filesystem::path agent =
            std::filesystem::path(TAVEL_CONSOLE).parent_path() / "TavelClipboardAgent";
        // The agent's parent is the script's shell, so the script drops --parent-pid.
        return world_.writeScript("agent", "shift 2\n'" + agent.string() + "' \"$@\" | " + distortion + "\n");
    }

    bool isTidy() const { return std::filesystem::is_empty(world_.temporaryDirectory()); }

    World world_;
};

TEST_F(ConsoleDemoTest, PlaysToTheEnd) {
    const ToolResult result = demo();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, HasSubstr("  > text Bonjour à tous, voilà l’été\n  [2] text: done (#1)\n"));
    EXPECT_THAT(result.output, HasSubstr("pasted: \"Bonjour à tous, voilà l’été\"\n"));
    EXPECT_THAT(result.output, HasSubstr("  text, 66 bytes: \"Shopping list:\\n\\t- bread\\n"));
    EXPECT_THAT(result.output, HasSubstr("  2 files:\n"));
    EXPECT_THAT(result.output, HasSubstr("  [4] image: done (#5)\n  pasted: 96 bytes of png\n"));
    EXPECT_THAT(result.output, HasSubstr("  [5] image-data: done (#6)\n  pasted: "));
    EXPECT_THAT(result.output, HasSubstr("  [6] formats: done (#7)\n  pasted: "));
    EXPECT_THAT(result.output, HasSubstr("  picture, 24 × 16 pixels, 96 bytes: /"));
    EXPECT_THAT(result.output, HasSubstr("  2 formats:\n    HTML, 25 bytes: /"));
    EXPECT_THAT(result.output, HasSubstr("\n    plain text, 11 bytes: /"));
    EXPECT_THAT(result.output,
                EndsWith("  the agent ended with exit status 0\n\nEverything happened as expected.\n"));
}

TEST_F(ConsoleDemoTest, PrintsTheSameEachTime) {
    EXPECT_EQ(withoutVaryingParts(demo().output), withoutVaryingParts(demo().output));
}

TEST_F(ConsoleDemoTest, LeavesNothingBehind) {
    runTool(world_, {TAVEL_PASTEBOARD, "copy"}, "mine");
    RunningTool console(world_, {TAVEL_CONSOLE, "--demo"});
    const std::string name = "tavel-console-demo-" + std::to_string(console.processIdentifier());
    EXPECT_EQ(console.finish().status, 0);
    EXPECT_TRUE(isTidy());
    EXPECT_EQ(runTool(world_, {TAVEL_PASTEBOARD, "paste"}).output, "mine");
    // Nine contents and the final clearing.
    EXPECT_EQ(runTool(world_, {TAVEL_PASTEBOARD, "--pasteboard", name, "count"}).output, "10\n");
    EXPECT_EQ(runTool(world_, {TAVEL_PASTEBOARD, "--pasteboard", name, "types"}).output, "");
}

TEST_F(ConsoleDemoTest, NoticesAMissingAgent) {
    const ToolResult result = demo({"--agent", "/nowhere"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-console: Cannot start /nowhere: No such file or directory\n");
    EXPECT_TRUE(isTidy());
}

TEST_F(ConsoleDemoTest, NoticesAnAgentThatDies) {
    const ToolResult result = demo({"--agent", world_.writeScript("agent", "read line\nkill -9 $$\n")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-console: The agent ended unexpectedly: signal 9 (Killed)\n");
    EXPECT_TRUE(isTidy());
}

TEST_F(ConsoleDemoTest, NoticesASilentAgent) {
    const std::string agent = world_.writeScript("agent", "while read line; do :; done\n");
    const ToolResult result = runTool(world_, {TAVEL_CONSOLE, "--demo", "--timeout", "1", "--agent", agent});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-console: Waited in vain for a reply.\n");
    EXPECT_TRUE(isTidy());
}

TEST_F(ConsoleDemoTest, NoticesAMissingEvent) {
    const std::string agent = distortedAgent("grep --line-buffered -v text_b64");
    const ToolResult result = runTool(world_, {TAVEL_CONSOLE, "--demo", "--timeout", "1", "--agent", agent});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-console: Waited in vain for the copied text.\n");
    EXPECT_THAT(result.output, EndsWith("  clipboard changed (#3)\n"));
    EXPECT_TRUE(isTidy());
}

TEST_F(ConsoleDemoTest, NoticesWrongContent) {
    const ToolResult result = demo({"--agent", distortedAgent(R"(sed -u 's/text_b64":"U/text_b64":"V/')")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-console: The agent told of another text.\n");
    EXPECT_TRUE(isTidy());
}

TEST_F(ConsoleDemoTest, NoticesAPictureThatIsNotThere) {
    const ToolResult result = demo({"--agent", distortedAgent(R"(sed -u 's/\.png"/.gone"/')")});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, EndsWith(".gone: No such file or directory\n"));
    EXPECT_THAT(result.output, HasSubstr("\n  picture, gone by now: /"));
    EXPECT_TRUE(isTidy());
}

TEST_F(ConsoleDemoTest, NoticesAnotherPicture) {
    const ToolResult result = demo({"--agent", distortedAgent(R"(sed -u 's/"image"/"files"/')")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-console: The agent told of another picture.\n");
    EXPECT_TRUE(isTidy());
}

TEST_F(ConsoleDemoTest, NoticesOtherFormats) {
    const auto errors = [this](const std::string& distortion) {
        const ToolResult result = demo({"--agent", distortedAgent("sed -u '/formats/" + distortion + "'")});
        EXPECT_EQ(result.status, 1);
        return result.errors;
    };
    EXPECT_EQ(errors(R"(s/,"[^"]*text.txt"//)"), "tavel-console: The agent told of other formats.\n");
    EXPECT_EQ(errors("s/text.html/text.txt/"), "tavel-console: The agent told of another page.\n");
    EXPECT_EQ(errors("s/text.txt/text.html/"), "tavel-console: The agent told of another text.\n");
    EXPECT_TRUE(isTidy());
}

TEST_F(ConsoleDemoTest, NoticesAnUnexpectedMessage) {
    const std::string event = R"({"event":"log","level":"warning","message":"surprise"})";
    const ToolResult result = demo({"--agent", distortedAgent("sed -u '2i " + event + "'")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-console: The agent did not reply to the command.\n");
    EXPECT_THAT(result.output, EndsWith("  warning: surprise\n"));
    EXPECT_TRUE(isTidy());
}

TEST_F(ConsoleDemoTest, NoticesAFailedCommand) {
    const ToolResult result = demo({"--agent", distortedAgent(R"(sed -u '2s/"ok":true/"ok":false/')")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-console: The agent could not carry out the command.\n");
}

TEST_F(ConsoleDemoTest, NoticesAnotherExitStatus) {
    const ToolResult result = demo({"--agent", distortedAgent("cat; exit 5")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-console: The agent ended in another way than it should.\n");
}

TEST_F(ConsoleDemoTest, CanBeInterrupted) {
    RunningTool console(world_, {TAVEL_CONSOLE, "--demo", "--agent",
                                 world_.writeScript("agent", "while read line; do :; done\n")});
    console.waitForOutput("> ping\n");
    console.sendSignal(SIGINT);
    const ToolResult result = console.finish();
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-console: Interrupted.\n");
    EXPECT_TRUE(isTidy());
}

TEST_F(ConsoleDemoTest, NoticesAMissingPasteboardTool) {
    const std::filesystem::path copy = world_.directory() / "tavel-console";
    std::filesystem::copy_file(TAVEL_CONSOLE, copy);
    std::filesystem::create_symlink(std::filesystem::path(TAVEL_CONSOLE).parent_path() /
                                        "TavelClipboardAgent",
                                    world_.directory() / "TavelClipboardAgent");
    const ToolResult result = runTool(world_, {copy.string(), "--demo"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("tavel-pasteboard: No such file or directory"));
    EXPECT_TRUE(isTidy());
}

} // namespace

} // namespace tavel
