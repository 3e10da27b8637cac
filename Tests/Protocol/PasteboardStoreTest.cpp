#include "Tests/Protocol/AgentTest.h"

#include <unistd.h>

#include <fstream>
#include <functional>
#include <ostream>

namespace tavel {

namespace {

namespace fs = std::filesystem;

/// A store that the agent must not or cannot use, and the code that makes it so.
struct Obstacle {
    std::string name;
    std::function<void(const fs::path& store)> arrange;
};

/// Without it, gtest would print addresses, and test names would change with each run.
void PrintTo(const Obstacle& obstacle, std::ostream* stream) {
    *stream << obstacle.name;
}

class UnusableStore : public AgentTest, public testing::WithParamInterface<Obstacle> {};

TEST_P(UnusableStore, leavesTheAgentAnEmptyPasteboardThatRefusesWrites) {
    GetParam().arrange(directory_.pasteboardStore());
    const std::string file = directory_.createFile("file");
    AgentProcess& agent = start();
    EXPECT_EQ(request(agent, {{"command", "ping"}}), success(0));
    EXPECT_EQ(request(agent, {{"command", "write_text"}, {"text_b64", "aGk"}, {"marker", ""}}),
              failure("\u00C9criture NSPasteboard impossible", 0));
    EXPECT_EQ(request(agent, {{"command", "write_text"}, {"text_b64", "a"}, {"marker", ""}}),
              failure("Texte clipboard invalide", 0));
    EXPECT_EQ(
        request(agent, {{"command", "write_files"}, {"kind", "files"}, {"paths", {file}}, {"marker", ""}}),
        failure("\u00C9criture fichiers impossible", 0));
    EXPECT_EQ(request(agent, {{"command", "write_files"},
                              {"kind", "files"},
                              {"paths", {file}},
                              {"marker", ""},
                              {"expected_sequence", 1}}),
              failure("Le presse-papiers local a chang\u00E9 pendant le transfert", 0));
    EXPECT_EQ(request(agent, {{"command", "discard_pending"}}), success(0));
    agent.closeInput();
    EXPECT_EQ(agent.nextLine(), std::nullopt);
    EXPECT_EQ(agent.waitForExit(), 0);
}

/// A directory of another user: root can change an owner, other users can only link to such a directory.
void giveAway(const fs::path& store) {
    if (geteuid() == 0) {
        fs::create_directory(store);
        fs::permissions(store, fs::perms::owner_all);
        ASSERT_EQ(chown(store.c_str(), 65534, 65534), 0);
    } else {
        fs::create_directory_symlink("/", store);
    }
}

const Obstacle obstacles[] = {
    {"readableByOthers",
     [](const fs::path& store) {
         fs::create_directory(store);
         fs::permissions(store, fs::perms(0755));
     }},
    {"searchableByTheGroup",
     [](const fs::path& store) {
         fs::create_directory(store);
         fs::permissions(store, fs::perms(0710));
     }},
    {"ownedBySomeoneElse", giveAway},
    {"linkedToAnotherDirectory",
     [](const fs::path& store) {
         const fs::path elsewhere = store.parent_path() / "elsewhere";
         fs::create_directory(elsewhere);
         fs::permissions(elsewhere, fs::perms::owner_all);
         fs::create_directory_symlink(elsewhere, store);
     }},
    {"aFile", [](const fs::path& store) { std::ofstream(store) << "no directory"; }},
    {"whoseFilesAreDirectories",
     [](const fs::path& store) {
         fs::create_directory(store);
         fs::permissions(store, fs::perms::owner_all);
         fs::create_directory(store / "pasteboards-2.mdb");
         fs::create_directory(store / "pasteboards-2.use");
     }},
};

INSTANTIATE_TEST_SUITE_P(Obstacles, UnusableStore, testing::ValuesIn(obstacles),
                         [](const auto& test) { return test.param.name; });

/// The store's file must never become a standard descriptor, or replies would overwrite it.
class StandardDescriptors : public AgentTest, public testing::WithParamInterface<std::vector<int>> {};

TEST_P(StandardDescriptors, areNeverThePasteboardStoreWhenTheyWereClosed) {
    otherApplication().copyText("before");
    AgentProcess::Options closed = options();
    closed.closedDescriptors = GetParam();
    AgentProcess& agent = launch(closed);
    for (std::uint64_t requestID = 0; requestID < 200; ++requestID)
        agent.send(pingLine(requestID));
    agent.send(R"({"command":"write_text","request_id":7,"text_b64":"aGk","marker":"m"})"
               "\n" +
               pingLine(8));
    agent.closeInput();
    EXPECT_EQ(agent.waitForExit(), 0);

    const bool hasInput = std::ranges::find(GetParam(), STDIN_FILENO) == GetParam().end();
    const bool hasOutput = std::ranges::find(GetParam(), STDOUT_FILENO) == GetParam().end();
    EXPECT_EQ(agent.remainingMessages().size(), hasInput && hasOutput ? 202u : 0u);
    EXPECT_EQ(otherApplication().text(), hasInput ? "hi" : "before");
    otherApplication().copyText("afterwards");
    EXPECT_EQ(otherApplication().text(), "afterwards");
}

INSTANTIATE_TEST_SUITE_P(Closed, StandardDescriptors,
                         testing::Values(std::vector{0}, std::vector{1}, std::vector{2}, std::vector{0, 1},
                                         std::vector{0, 2}, std::vector{1, 2}, std::vector{0, 1, 2}),
                         [](const auto& test) {
                             std::string name;
                             for (const int descriptor : test.param)
                                 name += std::to_string(descriptor);
                             return name;
                         });

class PasteboardStore : public AgentTest {
protected:
    /// Reads on to the reply to that command.
    static void awaitReply(AgentProcess& agent, std::uint64_t requestID) {
        while (agent.nextMessage().value("request_id", Json()) != Json(requestID)) {
        }
    }
};

TEST_F(PasteboardStore, isMadeAnewWhenItIsDamaged) {
    otherApplication().copyText("before");
    const fs::path store = directory_.pasteboardStore();
    for (const std::uintmax_t length : {0U, 8192U, 12'288U, 20'480U}) {
        forgetOtherApplication();
        for (const auto& entry : fs::directory_iterator(store))
            fs::resize_file(entry, length);
        AgentProcess& agent = start();
        const std::int64_t sequence = otherApplication().copyText("a");
        EXPECT_EQ(agent.nextMessage(), announcement(sequence)) << length;
        EXPECT_EQ(agent.nextMessage(), textEvent("YQ", 1, sequence)) << length;
        agent.closeInput();
        EXPECT_EQ(agent.waitForExit(), 0);
    }
}

TEST_F(PasteboardStore, losesNoCopyOfTwoAgentsThatWriteInTheSameInstant) {
    AgentProcess& first = start();
    AgentProcess& second = start();
    for (std::uint64_t round = 1; round <= 25; ++round) {
        const auto write = [&](AgentProcess& agent, std::string_view text) {
            agent.send(
                Json{{"command", "write_text"}, {"request_id", round}, {"text_b64", text}, {"marker", ""}}
                    .dump() +
                "\n");
        };
        write(first, "MQ");
        write(second, "Mg");
        awaitReply(first, round);
        awaitReply(second, round);
        const std::int64_t last = otherApplication().changeCount();
        EXPECT_EQ(last, static_cast<std::int64_t>(2 * round));
        const bool isOfFirst = otherApplication().text() == "1";
        const Json wanted = textEvent(isOfFirst ? "MQ" : "Mg", 1, last);
        AgentProcess& other = isOfFirst ? second : first;
        while (other.nextMessage() != wanted) { // its own copy, if it came first, may be reported before
        }
    }
}

TEST_F(PasteboardStore, standsInTheTemporaryDirectoryWithoutARuntimeDirectory) {
    AgentProcess::Options without = options();
    without.environment["XDG_RUNTIME_DIR"] = std::nullopt;
    AgentProcess& agent = start(without);
    EXPECT_EQ(request(agent, {{"command", "write_text"}, {"text_b64", "aGk"}, {"marker", ""}}), success(1));
    const OtherApplication neighbour(directory_.temporaryDirectory() /
                                     ("tavel-pasteboard-" + std::to_string(geteuid())));
    EXPECT_EQ(neighbour.text(), "hi");
}

TEST_F(PasteboardStore, keepsItsContentsWhenTheAgentEnds) {
    AgentProcess& agent = start();
    EXPECT_EQ(request(agent, {{"command", "write_text"}, {"text_b64", "aGk"}, {"marker", ""}}), success(1));
    agent.closeInput();
    EXPECT_EQ(agent.waitForExit(), 0);
    EXPECT_EQ(request(start(), {{"command", "ping"}}), success(1));
    EXPECT_EQ(otherApplication().text(), "hi");
}

} // namespace

} // namespace tavel
