#include "Tests/Clients/Cpp/HandOver.h"
#include "Tests/Support/TestProcess.h"
#include "Tests/Unit/Fixtures/ScratchDirectory.h"
#include "tavel/ClipboardAgent.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <variant>
#include <vector>

namespace tavel::client {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// Sessions with the real agent and another application, in the place that in-place has made.
class ClientSession : public testing::Test {
protected:
    ClientSession()
        : agent_(std::getenv("TAVEL_TEST_AGENT"), [this](const Event& event) { events_.add(event); }) {
        agent_.start();
        sequence_ = agent_.ping().get();
        // Without the module, the agent would use its store, on which the tests pass as well.
        if (std::getenv("TAVEL_TEST_PLACE") == std::string("wayland")) {
            EXPECT_THAT(contentOf("/proc/" + std::to_string(agent_.processIdentifier()) + "/maps"),
                        HasSubstr("tavel-wayland"));
        }
    }

    static std::string contentOf(const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    static std::string tool(std::vector<std::string> arguments, const std::string& input = {}) {
        arguments.insert(arguments.begin(), std::getenv("TAVEL_TEST_PASTEBOARD"));
        return run(arguments, input);
    }

    static std::string run(const std::vector<std::string>& commandLine, const std::string& input = {}) {
        TestProcess process(commandLine);
        process.send(input);
        EXPECT_EQ(process.waitForExit(), 0);
        return process.output();
    }

    /// The description of the next content, behind its announcement.
    Event described() {
        const Event announcement = events_.take();
        EXPECT_TRUE(std::holds_alternative<Change>(announcement)) << announcement;
        const std::uint64_t sequence = std::get<Change>(announcement).sequence;
        EXPECT_GT(sequence, sequence_);
        sequence_ = sequence;
        return events_.take();
    }

    std::string randomPicture(int width) const {
        const std::string path = directory_ / "random.png";
        run({TAVEL_PYTHON, "-c",
             "import sys; sys.path.append(sys.argv[1]); from pictures import make_random_png\n"
             "open(sys.argv[2], 'wb').write(make_random_png(int(sys.argv[3]), 1000, (1, 2, 3)))",
             TAVEL_TEST_SUPPORT, path, std::to_string(width)});
        return contentOf(path);
    }

    ScratchDirectory directory_;
    HandOver<Event> events_;
    ClipboardAgent agent_; // calls back into the members above, so it is destroyed first
    std::uint64_t sequence_ = 0;
};

TEST_F(ClientSession, reportsTextsOfEveryLengthOfBase64) {
    for (const std::string text : {"", "a", "é", "été", "Voilà 😀/\\\""}) {
        tool({"copy"}, text);
        const Event event = described();
        EXPECT_EQ(event, Event(TextChange{text, "", sequence_}));
    }
}

TEST_F(ClientSession, passesTheLargestTextBothWays) {
    std::string text;
    while (text.size() < std::size_t{4} * 1024 * 1024)
        text += "Voilà/?";
    text.resize(std::size_t{4} * 1024 * 1024);
    text.back() = '.';
    tool({"copy"}, text);
    const Event event = described();
    EXPECT_TRUE(event == Event(TextChange{text, "", sequence_})); // a message would show the texts
    std::reverse(text.begin(), text.end() - 1);
    std::replace_if(
        text.begin(), text.end(), [](char byte) { return static_cast<signed char>(byte) < 0; }, '?');
    agent_.writeText(text).get();
    EXPECT_TRUE(tool({"paste"}) == text);
}

TEST_F(ClientSession, writesATextWithItsMarker) {
    EXPECT_GT(agent_.writeText("Bonjour", "d'ici 😀").get(), sequence_);
    EXPECT_EQ(tool({"paste"}), "Bonjour");
    EXPECT_EQ(tool({"paste", "--type", "com.corvelle.tavelbridge.clipboard-origin-v1"}), "d'ici 😀");
}

TEST_F(ClientSession, passesLargePicturesBothWays) {
    const std::string written = randomPicture(1200);
    sequence_ = agent_.writeImageData(written).get();
    EXPECT_TRUE(tool({"paste", "--type", "png"}) == written);
    const std::string copied = randomPicture(1100);
    tool({"copy", "--type", "png"}, copied);
    const Event event = described();
    ASSERT_TRUE(std::holds_alternative<ImageChange>(event)) << event;
    EXPECT_TRUE(contentOf(std::get<ImageChange>(event).path) == copied);
}

TEST_F(ClientSession, passesFilesBothWays) {
    const std::vector<std::filesystem::path> paths{directory_.makeFile("d'été.txt"),
                                                   directory_.makeFile("100%.txt")};
    tool({"copy-files", paths[0], paths[1]});
    const Event event = described();
    EXPECT_EQ(event, Event(FilesChange{paths, "", sequence_}));
    EXPECT_GT(agent_.writeFiles(paths, "m", sequence_).get(), sequence_);
    try {
        agent_.writeFiles(paths, "m", sequence_).get();
        FAIL() << "not refused";
    } catch (const CommandRefused& refused) {
        EXPECT_STREQ(refused.what(), "Le presse-papiers local a changé pendant le transfert");
        EXPECT_GT(refused.sequence(), sequence_);
    }
}

TEST_F(ClientSession, passesFormatsBothWays) {
    const std::filesystem::path html = directory_.makeFile("text.html", "<b>Bonjour</b>");
    const std::filesystem::path text = directory_.makeFile("text.txt", "Bonjour");
    tool({"set", "html=" + html.string(), "text=" + text.string()});
    const Event event = described();
    ASSERT_TRUE(std::holds_alternative<FormatsChange>(event)) << event;
    std::vector<std::string> names;
    for (const std::filesystem::path& path : std::get<FormatsChange>(event).paths)
        names.push_back(path.filename());
    EXPECT_THAT(names, ElementsAre("text.html", "text.txt"));
    tool({"clear"});
    agent_.writeFormats({html, text}).get();
    EXPECT_EQ(tool({"paste"}), "Bonjour");
    randomPicture(3);
    agent_.writeImage(directory_ / "random.png").get();
    EXPECT_EQ(tool({"paste", "--type", "png"}), contentOf(directory_ / "random.png"));
}

TEST_F(ClientSession, carriesOutCommandsWithoutContent) {
    EXPECT_EQ(agent_.configureFilePrompt(false).get(), sequence_);
    EXPECT_EQ(agent_.discardPending().get(), sequence_);
    EXPECT_EQ(agent_.request(command::Other{"ping"}).get(), sequence_);
    EXPECT_EQ(agent_.quit().get(), sequence_);
}

TEST_F(ClientSession, startsTheAgentAgain) {
    const pid_t first = agent_.processIdentifier();
    agent_.restart();
    EXPECT_NE(agent_.processIdentifier(), first);
    EXPECT_FALSE(std::filesystem::exists("/proc/" + std::to_string(first)));
    sequence_ = agent_.ping().get();
    tool({"copy"}, "after that");
    const Event event = described();
    EXPECT_EQ(event, Event(TextChange{"after that", "", sequence_}));
}

} // namespace

} // namespace tavel::client
