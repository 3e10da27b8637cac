#include "Platform/PasteboardTypes.h"
#include "Tests/X11/X11AgentTest.h"
#include "Tests/X11/X11Program.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace tavel {

namespace {

namespace fs = std::filesystem;

class ChangeOnX11 : public X11AgentTest {
protected:
    /// Another program, fast enough to copy many times between two polls.
    X11Program& program() {
        if (!program_)
            program_.emplace(server_.display(), TransferTimeOuts{});
        return *program_;
    }

    void copyText(std::string_view text) {
        const auto pasteboard = program().open(std::nullopt);
        const PasteboardItem item{{std::string(pasteboardType::string), Bytes::copyOf(text)}};
        pasteboard->replaceWithItems({&item, 1});
    }

private:
    std::optional<X11Program> program_;
};

/// A line of the process's /proc/PID/status, by the name before the colon.
std::int64_t procNumber(pid_t process, const char* file, const std::string& name) {
    std::ifstream lines("/proc/" + std::to_string(process) + "/" + file);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(name + ":"))
            return std::stoll(line.substr(name.size() + 1));
    }
    throw std::runtime_error("no " + name + " in " + file);
}

std::size_t descriptorCount(pid_t process) {
    const fs::directory_iterator descriptors("/proc/" + std::to_string(process) + "/fd");
    return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

TEST_F(ChangeOnX11, whatIsThereAtTheStartIsNotReported) {
    copyWithXclip("before");
    expectSilence(agent());
    waitForPolls();
    expectSilence(agent());
}

TEST_F(ChangeOnX11, anOwnerThatEndsIsNoNewContent) {
    agent();
    {
        X11Program passing(server_.display(), TransferTimeOuts{});
        const auto pasteboard = passing.open(std::nullopt);
        pasteboard->replaceWithItems({});
        EXPECT_EQ(agent().nextMessage(), announcement(1));
    }
    waitForPolls();
    EXPECT_EQ(request(agent(), {{"command", "ping"}}), success(1));
}

TEST_F(ChangeOnX11, theAgentsOwnWritesAreNotReported) {
    for (std::int64_t round = 1; round <= 3; ++round) {
        EXPECT_EQ(request(agent(), {{"command", "write_text"}, {"text_b64", "aGk"}, {"marker", ""}}),
                  success(round));
        waitForPolls();
    }
    expectSilence(agent());
    EXPECT_EQ(pasteWithXclip(), "hi");
}

TEST_F(ChangeOnX11, aCommandKnowsOfACopyThatNoPollHasSeen) {
    const std::string path = world_.write("file", "");
    agent();
    for (std::int64_t round = 0; round < 20; ++round) {
        copyText("copy " + std::to_string(round));
        // Sent at once, usually long before the next poll.
        agent().send(Json{{"command", "write_files"},
                          {"request_id", 5},
                          {"kind", "files"},
                          {"paths", {path}},
                          {"marker", ""},
                          {"expected_sequence", round}}
                         .dump() +
                     "\n");
        std::vector<Json> replies;
        while (replies.empty() || !replies.back().contains("ok"))
            replies.push_back(agent().nextMessage());
        EXPECT_EQ(replies.back().value("reason", ""),
                  "Le presse-papiers local a chang\xC3\xA9 pendant le transfert");
        EXPECT_EQ(replies.back().value("sequence", 0), round + 1);
    }
}

TEST_F(ChangeOnX11, discardPendingIncludesACopyThatNoPollHasSeen) {
    agent();
    for (std::int64_t round = 1; round <= 10; ++round) {
        copyText("not to be reported");
        const auto reply = [&] {
            agent().send("{\"command\":\"discard_pending\",\"request_id\":1}\n");
            Json message = agent().nextMessage();
            while (!message.contains("ok")) // the event of a poll may come first
                message = agent().nextMessage();
            return message;
        }();
        EXPECT_EQ(reply.value("sequence", 0), round);
    }
    waitForPolls();
    expectSilence(agent());
}

TEST_F(ChangeOnX11, fiveHundredCopiesEndWithTheLastOneReportedAndNothingLeaked) {
    copyText("warm up");
    AgentProcess::Options frugal = x11Options();
    // AddressSanitizer delays the reuse of freed memory, which would look like a leak.
    const char* const asanOptions = std::getenv("ASAN_OPTIONS");
    frugal.environment["ASAN_OPTIONS"] = std::string(asanOptions != nullptr ? asanOptions : "") +
                                         ":quarantine_size_mb=0:thread_local_quarantine_size_kb=0";
    AgentProcess& watcher = start(frugal);
    const pid_t process = watcher.processIdentifier();
    constexpr std::int64_t copies = 500;
    for (std::int64_t copy = 1; copy <= copies; ++copy)
        copyText("copy " + std::to_string(copy) + " " + repeated("x", 2000));

    Json last = Json::object();
    while (last.value("sequence", 0) != copies || !last.contains("text_b64"))
        last = watcher.nextMessage();
    EXPECT_EQ(last.value("bytes", 0), 9 + 2000);
    waitForPolls();
    expectSilence(watcher);

    // The second round can reuse the memory that the first one freed. Only now is it certain that the search
    // for left-overs, at the start, has closed its directories.
    const std::size_t descriptors = descriptorCount(process);
    const std::int64_t residentBefore = procNumber(process, "status", "RssAnon");
    for (std::int64_t copy = 1; copy <= copies; ++copy)
        copyText("copy " + std::to_string(copy) + " " + repeated("y", 2000));
    while (last.value("sequence", 0) != 2 * copies || !last.contains("text_b64"))
        last = watcher.nextMessage();
    constexpr std::int64_t leakKilobytes = copies * 2000 / 1024; // the growth if each text leaked
    EXPECT_LT(procNumber(process, "status", "RssAnon") - residentBefore, leakKilobytes);
    waitForPolls();
    EXPECT_EQ(descriptorCount(process), descriptors);
}

TEST_F(ChangeOnX11, anIdleAgentSendsTheServerNothing) {
    copyText("something");
    agent();
    waitForPolls();
    const pid_t process = agent().processIdentifier();
    agent().waitUntilIdle();
    const std::int64_t written = procNumber(process, "io", "wchar");
    waitForPolls();
    EXPECT_EQ(procNumber(process, "io", "wchar"), written);
    copyText("something else");
    EXPECT_EQ(agent().nextMessage(), announcement(1));
    EXPECT_TRUE(agent().nextMessage().contains("text_b64"));
    EXPECT_GT(procNumber(process, "io", "wchar"), written) << "what is measured sees requests";
}

TEST_F(ChangeOnX11, aNamedPasteboardIsTheSelectionOfThatName) {
    AgentProcess& primary = start(x11Options({"--test-pasteboard", "PRIMARY"}));
    agent();
    outputOf({"sh", "-c", "xclip -selection primary -in >/dev/null 2>&1"}, "hi");
    EXPECT_EQ(primary.nextMessage(), announcement(1));
    EXPECT_EQ(primary.nextMessage(), textEvent("aGk", 2, 1));
    EXPECT_EQ(request(primary, {{"command", "write_text"}, {"text_b64", "aG8"}, {"marker", ""}}), success(2));
    EXPECT_EQ(outputOf({"xclip", "-selection", "primary", "-out"}), "ho");
    expectSilence(agent());
}

TEST_F(ChangeOnX11, twoAgentsReportEachOthersContentWithItsMarker) {
    AgentProcess& other = start(x11Options());
    EXPECT_EQ(
        request(agent(), {{"command", "write_text"}, {"text_b64", "aGk"}, {"marker", "from the first"}}),
        success(1));
    EXPECT_EQ(other.nextMessage(), announcement(1, "from the first"));
    EXPECT_EQ(other.nextMessage(), textEvent("aGk", 2, 1, "from the first"));
    EXPECT_EQ(request(other, {{"command", "write_text"}, {"text_b64", "aG8"}, {"marker", "from the second"}}),
              success(2));
    EXPECT_EQ(agent().nextMessage(), announcement(2, "from the second"));
    EXPECT_EQ(agent().nextMessage(), textEvent("aG8", 2, 2, "from the second"));
}

} // namespace

} // namespace tavel
