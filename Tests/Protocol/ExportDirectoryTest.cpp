#include "Tests/Protocol/AgentTest.h"
#include "Tests/Support/WaitUntil.h"

#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <set>

namespace tavel {

namespace {

namespace fs = std::filesystem;

class ExportDirectory : public AgentTest {
protected:
    fs::path onlyExportDirectory() const {
        const auto found = exportDirectories();
        EXPECT_EQ(found.size(), 1u);
        return found.empty() ? fs::path() : found.front();
    }

    static mode_t modeOf(const fs::path& path) {
        struct stat status {};
        EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
        return status.st_mode;
    }

    static std::set<fs::path> exportDirectoriesOfTheMachine() {
        std::set<fs::path> found;
        for (const auto& entry : fs::directory_iterator("/tmp")) {
            if (entry.path().filename().string().starts_with("tavel-clipboard-"))
                found.insert(entry.path());
        }
        return found;
    }

    /// Directories of other agents may come and go in the machine's own temporary directory.
    void expectInTmp(const std::optional<std::string>& variable) {
        const auto before = exportDirectoriesOfTheMachine();
        AgentProcess::Options changed = options();
        changed.environment["TMPDIR"] = variable;
        AgentProcess& agent = start(changed);
        std::set<fs::path> fresh = exportDirectoriesOfTheMachine();
        std::erase_if(fresh, [&](const fs::path& path) { return before.contains(path); });
        agent.closeInput();
        EXPECT_EQ(agent.waitForExit(), 0);
        EXPECT_TRUE(std::ranges::any_of(fresh, [](const fs::path& path) { return !fs::exists(path); }));
        EXPECT_TRUE(exportDirectories().empty());
    }
};

TEST_F(ExportDirectory, isNamedAfterARandomUuid) {
    start();
    const std::string digit = "[0-9A-F]";
    EXPECT_THAT(onlyExportDirectory().filename().string(),
                testing::MatchesRegex("tavel-clipboard-" + repeated(digit, 8) + "-" + repeated(digit, 4) +
                                      "-4" + repeated(digit, 3) + "-[89AB]" + repeated(digit, 3) + "-" +
                                      repeated(digit, 12)));
}

TEST_F(ExportDirectory, isPrivateWhateverTheUmask) {
    AgentProcess::Options open = options();
    open.launcher = {"/bin/sh", "-c", R"(umask 0; exec "$0" "$@")"};
    start(open);
    EXPECT_EQ(modeOf(onlyExportDirectory()), mode_t{S_IFDIR | 0700});
}

TEST_F(ExportDirectory, isEachAgentsOwn) {
    AgentProcess& first = start();
    start();
    start(options({}));
    EXPECT_EQ(exportDirectories().size(), 3u);
    first.closeInput();
    EXPECT_EQ(first.waitForExit(), 0);
    EXPECT_EQ(exportDirectories().size(), 2u);
}

TEST_F(ExportDirectory, standsInTmpWithoutATemporaryDirectory) {
    expectInTmp(std::nullopt);
}

TEST_F(ExportDirectory, standsInTmpWhenTheTemporaryDirectoryIsEmpty) {
    expectInTmp("");
}

TEST_F(ExportDirectory, standsInTmpWhenTheTemporaryDirectoryIsRelative) {
    expectInTmp("temporary");
}

TEST_F(ExportDirectory, standsInTmpWhenTheTemporaryDirectoryCannotBeUsed) {
    expectInTmp((directory_.temporaryDirectory() / "missing").string());
    expectInTmp((directory_.createFile("file") / "below").string());
    const fs::path latin1 = directory_.path() / "\xE9";
    fs::create_directory(latin1);
    expectInTmp(latin1.string());
}

TEST_F(ExportDirectory, isRemovedAtEndOfInput) {
    AgentProcess& agent = start();
    onlyExportDirectory();
    agent.closeInput();
    EXPECT_EQ(agent.waitForExit(), 0);
    EXPECT_TRUE(fs::is_empty(directory_.temporaryDirectory()));
}

TEST_F(ExportDirectory, isRemovedAfterQuit) {
    AgentProcess& agent = start();
    onlyExportDirectory();
    EXPECT_EQ(request(agent, {{"command", "quit"}}), success(0));
    EXPECT_EQ(agent.waitForExit(), 0);
    EXPECT_TRUE(fs::is_empty(directory_.temporaryDirectory()));
}

TEST_F(ExportDirectory, isRemovedWhenTheInputWasNeverOpen) {
    AgentProcess& agent = launch(options());
    agent.closeInput();
    EXPECT_EQ(agent.waitForExit(), 0);
    EXPECT_TRUE(fs::is_empty(directory_.temporaryDirectory()));
}

TEST_F(ExportDirectory, isRemovedWithEverythingInItButNotWhatLinksLeadTo) {
    AgentProcess& agent = start();
    const fs::path exports = onlyExportDirectory();
    const fs::path elsewhere = directory_.createFile("elsewhere/file");
    directory_.createFile(exports / "sub" / "deeper" / "file");
    directory_.createFile(exports / "file");
    fs::create_directory_symlink(elsewhere.parent_path(), exports / "link");
    fs::create_symlink(elsewhere, exports / "sub" / "link");
    agent.closeInput();
    EXPECT_EQ(agent.waitForExit(), 0);
    EXPECT_TRUE(fs::is_empty(directory_.temporaryDirectory()));
    EXPECT_TRUE(fs::exists(elsewhere));
}

TEST_F(ExportDirectory, goesWithTheNextAgentAfterAnyDeath) {
    for (const int death : {SIGKILL, SIGTERM, SIGHUP, SIGINT, SIGABRT}) {
        AgentProcess& killed = start();
        const fs::path left = exportDirectories().at(0);
        killed.signal(death);
        killed.waitForExit();
        EXPECT_TRUE(fs::exists(left)) << strsignal(death);
        AgentProcess& next = start();
        waitUntil([&] { return !fs::exists(left); }, AgentProcess::deadline);
        EXPECT_EQ(exportDirectories().size(), 1U) << strsignal(death);
        next.closeInput();
        EXPECT_EQ(next.waitForExit(), 0);
    }
}

TEST_F(ExportDirectory, staysWhileItsAgentLivesAndWhenItIsSomethingElse) {
    const fs::path other =
        directory_.temporaryDirectory() / "tavel-clipboard-00000000-0000-4000-8000-000000000000";
    directory_.createFile(other / "notes.txt");
    fs::permissions(other, fs::perms::owner_all);
    start();
    const std::vector<fs::path> kept = exportDirectories();
    EXPECT_EQ(kept.size(), 2U);
    AgentProcess& killed = start();
    std::vector<fs::path> three = exportDirectories();
    killed.signal(SIGKILL);
    killed.waitForExit();
    AgentProcess& next = start();
    // Whatever order it goes through them in: the last one is gone, so the others were left.
    waitUntil(
        [&] {
            return std::ranges::count_if(three, [](const fs::path& one) { return fs::exists(one); }) == 2;
        },
        AgentProcess::deadline);
    next.closeInput();
    EXPECT_EQ(next.waitForExit(), 0);
    for (const fs::path& one : kept)
        EXPECT_TRUE(fs::exists(one)) << one;
}

TEST_F(ExportDirectory, mayBeGoneAtTheEnd) {
    AgentProcess& agent = start();
    fs::remove(onlyExportDirectory());
    agent.closeInput();
    EXPECT_EQ(agent.waitForExit(), 0);
}

TEST_F(ExportDirectory, isDoneWithoutWhereItCannotBeCreated) {
    AgentProcess::Options impossible = options();
    // The directory is there when the agent looks for it, and never takes anything.
    impossible.environment["TMPDIR"] = "/proc/self/fd";
    AgentProcess& agent = start(impossible);
    EXPECT_EQ(request(agent, {{"command", "write_text"}, {"text_b64", "aGk"}, {"marker", ""}}), success(1));
    const std::int64_t sequence = otherApplication().copyText("a");
    EXPECT_EQ(agent.nextMessage(), announcement(sequence));
    EXPECT_EQ(agent.nextMessage(), textEvent("YQ", 1, sequence));
    agent.closeInput();
    EXPECT_EQ(agent.waitForExit(), 0);
}

} // namespace

} // namespace tavel
