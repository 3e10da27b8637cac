#include "Tests/Tools/DoctorTest.h"
#include "Tests/Wayland/Compositor.h"

#include <fstream>
#include <iterator>

namespace tavel {

namespace {

namespace fs = std::filesystem;

using testing::ContainsRegex;
using testing::HasSubstr;

/// Agents that do not work, and parts that are missing.
class DoctorFaultTest : public DoctorTest {
protected:
    /// The report about an agent that the script plays, with a time-out of one second.
    std::string reportOn(const std::string& script) const {
        return report(2, {"--agent", world_.writeScript("agent", script), "--timeout", "1"});
    }

    /// Copies the programs and what belongs to them; returns the copy's directory of modules.
    fs::path copiedModules() const {
        const fs::path programs = fs::path(TAVEL_CONSOLE).parent_path();
        fs::create_directories(copy_ / "bin");
        fs::create_directory(copy_ / "lib");
        for (const char* const name : {"tavel-console", "TavelClipboardAgent"})
            fs::copy(programs / name, copy_ / "bin" / name);
        fs::copy(programs.parent_path() / "lib" / "tavel", copy_ / "lib" / "tavel");
        return copy_ / "lib" / "tavel";
    }

    std::string reportOfTheCopy() const {
        const ToolResult result = runTool(world_, {(copy_ / "bin" / "tavel-console").string(), "doctor"});
        EXPECT_EQ(result.status, 1) << result.output;
        return result.output;
    }

    fs::path copy_ = world_.directory() / "copy";
};

TEST_F(DoctorFaultTest, SaysThatTheAgentIsMissing) {
    const std::string said = report(2, {"--agent", "/nowhere/agent"});
    EXPECT_THAT(said,
                HasSubstr("  program          /nowhere/agent\n"
                          "  fault            Cannot start /nowhere/agent: No such file or directory\n"));
    EXPECT_THAT(said, HasSubstr("  agent            could not be asked\n"));
    EXPECT_THAT(said,
                HasSubstr("\nThe agent does not work:\n"
                          "  1. Agent, fault: Cannot start /nowhere/agent: No such file or directory.\n"));
}

TEST_F(DoctorFaultTest, SaysThatTheAgentCrashes) {
    EXPECT_THAT(reportOn("read line\nkill -9 $$\n"),
                HasSubstr("  fault            it ended unexpectedly: signal 9 (Killed)\n"));
}

TEST_F(DoctorFaultTest, GivesUpOnASilentAgent) {
    EXPECT_THAT(reportOn("while read line; do :; done\n"),
                HasSubstr("  fault            it does not answer within 1 s\n"));
}

TEST_F(DoctorFaultTest, DoesNotRepeatWhatAnAgentBabbles) {
    const std::string said = reportOn("echo 'my secret'\nwhile read line; do :; done\n");
    EXPECT_THAT(said, HasSubstr("it says something that is no message of the protocol\n"));
    EXPECT_THAT(said, testing::Not(HasSubstr("secret")));
}

TEST_F(DoctorFaultTest, SaysHowTheAgentEnds) {
    const std::string agent = "'" + (fs::path(TAVEL_CONSOLE).parent_path() / "TavelClipboardAgent").string() +
                              "' --test-pasteboard tavel-console-doctor\n";
    EXPECT_THAT(reportOn(agent + "exit 5\n"), HasSubstr("  fault            it ended with exit status 5\n"));
    EXPECT_THAT(reportOn(agent + "exec sleep 30\n"),
                HasSubstr("  fault            it does not end by itself when its input ends\n"));
}

TEST_F(DoctorFaultTest, NamesEachMissingPartAndWhatIsLostWithIt) {
    const Compositor compositor;
    const fs::path modules = copiedModules();
    for (const char* const name :
         {"tavel-dates.so", "tavel-focus.so", "tavel-wayland.so", "tavel-images", "tavel-panel"})
        fs::remove(modules / name);
    world_.setVariable("WAYLAND_DISPLAY", compositor.display());
    const std::string said = reportOfTheCopy();
    EXPECT_THAT(said, HasSubstr("Modules and programs\n  directory        " + modules.string() + "\n"));
    EXPECT_THAT(said,
                ContainsRegex("not on Wayland +the module for it cannot be loaded: .*/tavel-wayland.so: "));
    EXPECT_THAT(said, ContainsRegex("tavel-dates +cannot be loaded: .*/tavel-dates.so: cannot open"));
    EXPECT_THAT(said, ContainsRegex("tavel-focus +cannot be loaded: .*/tavel-focus.so: cannot open"));
    EXPECT_THAT(said, ContainsRegex("tavel-wayland +cannot be loaded: .*/tavel-wayland.so: cannot open"));
    EXPECT_THAT(said, ContainsRegex("tavel-images +cannot be started: .*/tavel-images: No such file"));
    EXPECT_THAT(said, ContainsRegex("tavel-panel +cannot be started: .*/tavel-panel: No such file"));
    EXPECT_THAT(said, HasSubstr("Without it, the clipboard of a Wayland compositor is not used.\n"));
    EXPECT_THAT(said, HasSubstr("Without it, the file prompt cannot be switched on.\n"));
}

TEST_F(DoctorFaultTest, NamesTheLibraryThatAProgramMisses) {
    const fs::path panel = copiedModules() / "tavel-panel";
    std::ifstream file(panel, std::ios::binary);
    std::string program{std::istreambuf_iterator<char>(file), {}};
    file.close();
    for (std::size_t at = 0; (at = program.find("libgtk-3.so.0", at)) != std::string::npos;)
        program.replace(at, 13, "libgtk-X.so.0");
    std::ofstream(panel, std::ios::binary) << program;
    EXPECT_THAT(reportOfTheCopy(),
                HasSubstr("  tavel-panel      cannot be started: libgtk-X.so.0 => not found\n"));
}

TEST_F(DoctorFaultTest, NoticesAProgramThatDoesNotConvert) {
    const fs::path images = copiedModules() / "tavel-images";
    fs::remove(images);
    fs::copy("/bin/false", images);
    EXPECT_THAT(reportOfTheCopy(), HasSubstr("  tavel-images     starts, but does not convert a picture\n"));
}

} // namespace

} // namespace tavel
