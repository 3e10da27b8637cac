#include "Tests/Support/WaitUntil.h"
#include "Tests/X11/ScriptedRequestor.h"
#include "Tests/X11/X11AgentTest.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <system_error>

namespace tavel {

namespace {

namespace fs = std::filesystem;

using namespace std::chrono_literals;

/// tavel-pasteboard on an X server, where the copying program keeps the content.
class PasteboardToolOnX11 : public X11AgentTest {
protected:
    std::string pasteboard(std::vector<std::string> arguments, std::string_view input = {}) const {
        arguments.insert(arguments.begin(), TAVEL_PASTEBOARD);
        return outputOf(arguments, input);
    }

    /// The /proc directories of its processes that serve on this test's X server.
    std::vector<fs::path> backgroundProcesses() const {
        std::vector<fs::path> found;
        for (const auto& process : fs::directory_iterator("/proc")) {
            std::error_code gone;
            const fs::path program = fs::read_symlink(process.path() / "exe", gone);
            std::ifstream file(process.path() / "environ", std::ios::binary);
            const std::string environment{std::istreambuf_iterator<char>(file), {}};
            if (program == TAVEL_PASTEBOARD &&
                environment.find("DISPLAY=" + server_.display() + '\0') != std::string::npos)
                found.push_back(process.path());
        }
        return found;
    }

    void expectNoProcessLeft() const {
        waitUntil([this] { return backgroundProcesses().empty(); }, AgentProcess::deadline);
    }
};

TEST_F(PasteboardToolOnX11, copiesForAsLongAsNobodyElseCopies) {
    pasteboard({"copy"}, "h\xC3\xA9llo");
    EXPECT_EQ(backgroundProcesses().size(), 1u);
    EXPECT_EQ(pasteWithXclip(), "h\xC3\xA9llo");
    EXPECT_EQ(pasteboard({"paste"}), "h\xC3\xA9llo");
    pasteboard({"copy"}, "next");
    EXPECT_EQ(pasteWithXclip(), "next");
    waitUntil([this] { return backgroundProcesses().size() == 1; }, AgentProcess::deadline);
    copyWithXclip("another's");
    expectNoProcessLeft();
    EXPECT_EQ(pasteboard({"paste"}), "another's");
}

TEST_F(PasteboardToolOnX11, offersSeveralTypesOfOneThing) {
    const std::string html = world_.write("note.html", "<b>hi</b>");
    pasteboard({"set", "html=" + html, "text=-", "com.example.own=" + html}, "hi");
    EXPECT_EQ(pasteboard({"types"}), "public.html\npublic.utf8-plain-text\ncom.example.own\n");
    EXPECT_EQ(pasteWithXclip("text/html"), "<b>hi</b>");
    EXPECT_EQ(pasteWithXclip("text/plain"), "hi");
    EXPECT_EQ(pasteWithXclip("com.example.own"), "<b>hi</b>");
}

TEST_F(PasteboardToolOnX11, copiesFiles) {
    const std::string file = world_.write("a b", "");
    pasteboard({"copy-files", file});
    EXPECT_EQ(pasteboard({"paste-files"}), file + "\n");
    EXPECT_EQ(pasteboard({"types"}), "public.file-url\n");
}

TEST_F(PasteboardToolOnX11, leavesNothingBehindWhenItClears) {
    copyWithXclip("before");
    pasteboard({"clear"});
    EXPECT_EQ(pasteboard({"types"}), "");
    expectNoProcessLeft();
}

TEST_F(PasteboardToolOnX11, readsWithoutStaying) {
    copyWithXclip("there");
    pasteboard({"paste"});
    pasteboard({"types"});
    EXPECT_TRUE(backgroundProcesses().empty());
}

TEST_F(PasteboardToolOnX11, waitsForARequestorThatTakesNothingButNotForEver) {
    const std::string picture = world_.write("picture", repeated("sixteen bytes...", 300'000));
    pasteboard({"copy", "--type", "png", picture}); // too large for one property
    ScriptedRequestor requestor(server_.display());
    ASSERT_TRUE(requestor.convert("image/png"));
    copyWithXclip("another's");
    EXPECT_EQ(backgroundProcesses().size(), 1u) << "the transfer could still go on";
    expectNoProcessLeft(); // the time-out alone ends the process
}

TEST_F(PasteboardToolOnX11, endsWithTheServer) {
    pasteboard({"copy"}, "text");
    server_.stop();
    expectNoProcessLeft();
}

TEST_F(PasteboardToolOnX11, keepsNoDirectoryAndNoPipeInTheBackground) {
    // If the background process kept the output open, the inner command would never end.
    EXPECT_EQ(outputOf({"sh", "-c", R"(echo "$(echo hi | "$0" copy)done")", TAVEL_PASTEBOARD}), "done\n");
    const std::vector<fs::path> processes = backgroundProcesses();
    ASSERT_EQ(processes.size(), 1u);
    EXPECT_EQ(fs::read_symlink(processes.front() / "cwd"), "/");
}

TEST_F(PasteboardToolOnX11, carriesThreeHundredMegabytesBothWays) {
    std::string block(1'000'003, '\0'); // no chunk size is a multiple of this
    std::minstd_rand random(20240229);
    std::ranges::generate(block, [&] { return static_cast<char>(random() >> 8); });
    const std::string content = repeated(block, 315).substr(0, 300 << 20);
    const std::string file = world_.write("large", content);

    // Compared by a program, as reading so much in the test itself is slow.
    pasteboard({"copy", "--type", "png", file});
    outputOf({"sh", "-c", R"(xclip -selection clipboard -out -target image/png | cmp - "$0")", file});
    outputOf({"sh", "-c", R"(xclip -selection clipboard -in -target image/png "$0" >/dev/null 2>&1)", file});
    expectNoProcessLeft();
    outputOf({"sh", "-c", R"("$0" paste --type png | cmp - "$1")", TAVEL_PASTEBOARD, file});
}

} // namespace

} // namespace tavel
