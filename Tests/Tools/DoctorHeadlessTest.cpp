#include "Tests/Tools/DoctorTest.h"

namespace tavel {

namespace {

using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

TEST_F(DoctorTest, TellsOfTheStoreAndWhyItIsTheStore) {
    const std::string said = report(1);
    EXPECT_THAT(said, ContainsRegex("stands on +the pasteboards in .*/tavel-pasteboard, as no display"));
    EXPECT_THAT(said, HasSubstr("  not on Wayland   WAYLAND_DISPLAY is not set\n"
                                "  not on X11       DISPLAY is not set\n"));
    EXPECT_THAT(said, ContainsRegex("write and read +works; tried on "));
    EXPECT_THAT(said, HasSubstr("  tavel-images     converts a picture\n"));
    EXPECT_THAT(said, EndsWith("\nThe agent works, but something is limited:\n"
                               "  1. File prompt, keyboard: there is no display, so there are no keys to "
                               "intercept.\n"
                               "     The file prompt needs a desktop on X11. All else works without it.\n"));
}

TEST_F(DoctorTest, ShowsTypesAndSizesButNoContent) {
    const std::string file = world_.write("file", "<b>my secret</b>");
    pasteboard({"set", "text=-", "html=" + file}, "my secret");
    const std::string said = report(1);
    EXPECT_THAT(said, HasSubstr("public.utf8-plain-text, 9 bytes\n"));
    EXPECT_THAT(said, HasSubstr("public.html, 16 bytes\n"));
    EXPECT_THAT(said, HasSubstr("none of the agent's parent, none of a password manager"));
    EXPECT_THAT(said, Not(HasSubstr("secret")));
}

TEST_F(DoctorTest, KnowsTheMarkers) {
    const std::string file = world_.write("file", "secret");
    pasteboard({"set", "text=-", "x-kde-passwordManagerHint=" + file}, "my secret");
    const std::string managed = report(1);
    EXPECT_THAT(managed, HasSubstr("  markers          a mark by which password managers ask"));
    EXPECT_THAT(managed, Not(HasSubstr("secret")));
    pasteboard({"set", "text=-", "com.corvelle.tavelbridge.clipboard-origin-v1=" + file}, "my secret");
    const std::string marked = report(1);
    EXPECT_THAT(marked, HasSubstr("  markers          the marker of the agent's parent\n"));
    EXPECT_THAT(marked, Not(HasSubstr("secret")));
}

TEST_F(DoctorTest, ListsFortyTypesAtMost) {
    const std::string file = world_.write("file", "x");
    std::vector<std::string> many{"set"};
    for (int number = 0; number < 42; ++number)
        many.push_back("com.example.type" + std::to_string(number) + "=" + file);
    pasteboard(many);
    const std::string said = report(1);
    EXPECT_THAT(said, HasSubstr("com.example.type39, 1 byte\n"));
    EXPECT_THAT(said, HasSubstr("and 2 more types\n"));
    EXPECT_THAT(said, Not(HasSubstr("com.example.type40")));
}

TEST_F(DoctorTest, LeavesTheClipboardAndNoTextBehind) {
    pasteboard({"copy"}, "mine");
    report(1);
    EXPECT_EQ(pasteboard({"paste"}), "mine");
    EXPECT_EQ(pasteboard({"count"}), "1\n");
    EXPECT_EQ(pasteboard({"--pasteboard", "tavel-console-doctor", "types"}), "");
    EXPECT_TRUE(std::filesystem::is_empty(world_.temporaryDirectory()));
}

TEST_F(DoctorTest, SaysThatTheStoreCannotBeUsed) {
    const std::filesystem::path store = world_.directory() / "runtime" / "tavel-pasteboard";
    std::filesystem::create_directories(store.parent_path());
    world_.setVariable("XDG_RUNTIME_DIR", store.parent_path().string());
    std::filesystem::create_symlink("/nowhere", store);
    const std::string said = report(1);
    EXPECT_THAT(said, ContainsRegex("write and read +the agent refuses to write: "));
    EXPECT_THAT(said,
                ContainsRegex("offers +cannot be read: The pasteboard directory .* is not a directory"));
}

TEST_F(DoctorTest, SaysWhyADisplayIsPassedOver) {
    world_.setVariable("WAYLAND_DISPLAY", "/nowhere/wayland-0");
    world_.setVariable("DISPLAY", ":no number");
    const std::string said = report(1);
    EXPECT_THAT(said,
                HasSubstr("  not on Wayland   no compositor answers at /nowhere/wayland-0 (No such file "
                          "or directory)\n"
                          "  not on X11       \":no number\" is no name of a display\n"));
    EXPECT_THAT(said, HasSubstr("  1. Clipboard, not on Wayland: no compositor answers at "));
    EXPECT_THAT(said, HasSubstr("  2. Clipboard, not on X11: "));
    world_.setVariable("WAYLAND_DISPLAY", "");
    world_.setVariable("DISPLAY", ":4242");
    EXPECT_THAT(report(1), HasSubstr("  not on Wayland   WAYLAND_DISPLAY is empty\n"
                                     "  not on X11       no X server answers at :4242, or it does not let "
                                     "this user in\n"));
    world_.setVariable("WAYLAND_DISPLAY", "wayland-0");
    world_.setVariable("XDG_RUNTIME_DIR", "");
    EXPECT_THAT(report(1), HasSubstr("WAYLAND_DISPLAY needs XDG_RUNTIME_DIR, which is no absolute path\n"));
}

TEST_F(DoctorTest, HasAHelpThatTellsTheStatuses) {
    EXPECT_THAT(report(0, {"--help"}), HasSubstr("The exit status is 0 when all is well; 1 when"));
    EXPECT_EQ(doctor({"--demo"}).status, 2);
    EXPECT_EQ(runTool(world_, {TAVEL_CONSOLE, "--pasteboard", "other", "doctor"}).status, 2);
}

TEST_F(DoctorTest, NoticesThatItCannotWrite) {
    const std::string script =
        world_.writeScript("full", std::string("exec '") + TAVEL_CONSOLE + "' doctor > /dev/full\n");
    const ToolResult result = runTool(world_, {script});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-console: standard output: No space left on device\n");
}

} // namespace

} // namespace tavel
