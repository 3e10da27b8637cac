#include "Tests/Protocol/AgentTest.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/Unit/Fixtures/ForkedFunction.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <functional>

namespace tavel {

namespace {

namespace fs = std::filesystem;

/// Agents of two users, root and nobody, with one directory for temporary files.
class TwoUsers : public AgentTest {
protected:
    void SetUp() override {
        if (geteuid() != 0)
            GTEST_SKIP() << "Only root can become a second user: THIS TEST DID NOT RUN";
        fs::permissions(directory_.path(), fs::perms{0711});
        fs::create_directory(shared());
        fs::permissions(shared(), fs::perms{01777});
    }

    fs::path shared() const { return directory_.path() / "shared"; }

    AgentProcess& startOurs() {
        AgentProcess::Options ours = options();
        ours.environment["TMPDIR"] = shared();
        return start(ours);
    }

    AgentProcess& startTheirs() {
        AgentProcess::Options theirs = options();
        theirs.environment["TMPDIR"] = shared();
        theirs.launcher = {"/usr/bin/env", "setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"};
        return start(theirs);
    }

    std::vector<fs::path> exportsOf(uid_t user) const {
        std::vector<fs::path> found;
        for (const auto& entry : fs::directory_iterator(shared())) {
            struct stat status {};
            if (entry.path().filename().string().starts_with("tavel-clipboard-") &&
                lstat(entry.path().c_str(), &status) == 0 && status.st_uid == user)
                found.push_back(entry.path());
        }
        return found;
    }

    /// The files of an export of the next copy.
    std::vector<fs::path> exported(AgentProcess& agent) {
        const std::int64_t sequence = otherApplication().copy({{representation("public.html", "secret")}});
        EXPECT_EQ(agent.nextMessage(), announcement(sequence));
        return agent.nextMessage().at("paths").get<std::vector<fs::path>>();
    }

    static constexpr uid_t nobody = 65534;
};

TEST_F(TwoUsers, neitherReadNorRemoveWhatIsTheOthers) {
    AgentProcess& ours = startOurs();
    const fs::path file = exported(ours).at(0);
    const fs::path store = directory_.pasteboardStore();
    EXPECT_EQ(exitStatusOf([&] {
                  fs::permissions(directory_.runtimeDirectory(), fs::perms{0777}); // leads to the store
                  dropRootRights();
                  for (const fs::path& path : {file, file.parent_path(), file.parent_path().parent_path(),
                                               store, store / "pasteboards-2.use"}) {
                      if (open(path.c_str(), O_RDONLY) >= 0 || errno != EACCES)
                          return 1;
                  }
                  const fs::path directory = file.parent_path().parent_path();
                  if (unlink(file.c_str()) == 0 || rename(directory.c_str(), (shared() / "x").c_str()) == 0)
                      return 2;
                  return 0;
              }),
              0);

    ours.signal(SIGKILL);
    ours.waitForExit();
    AgentProcess& first = startTheirs();
    const fs::path theirs = exportsOf(nobody).at(0);
    first.signal(SIGKILL);
    first.waitForExit();
    startTheirs();
    waitUntil([&] { return !fs::exists(theirs); }, AgentProcess::deadline);
    EXPECT_TRUE(fs::exists(file)) << "is left to its own user's agents";
    const fs::path kept = exportsOf(nobody).at(0);
    startOurs();
    waitUntil([&] { return !fs::exists(file.parent_path().parent_path()); }, AgentProcess::deadline);
    EXPECT_TRUE(fs::exists(kept));
}

TEST_F(TwoUsers, shareNoPasteboard) {
    AgentProcess& ours = startOurs();
    EXPECT_EQ(request(ours, {{"command", "write_text"}, {"text_b64", "aGk"}, {"marker", ""}}), success(1));
    EXPECT_EQ(request(startTheirs(), {{"command", "ping"}}), success(0));
}

TEST_F(TwoUsers, areKeptApartWhereOneCanReplaceTheOthersDirectory) {
    fs::permissions(shared(), fs::perms{0777}); // without the sticky bit
    AgentProcess& ours = startOurs();
    const std::vector<std::function<int(const fs::path&)>> replacements{
        [](const fs::path& directory) { return mkdir(directory.c_str(), 0777); },
        [&](const fs::path& directory) { return symlink((shared() / "trap").c_str(), directory.c_str()); },
    };
    ASSERT_EQ(exitStatusOf([&] {
                  dropRootRights();
                  return mkdir((shared() / "trap").c_str(), 0777);
              }),
              0);
    for (const auto& replace : replacements) {
        const fs::path directory = exportsOf(0).at(0);
        ASSERT_EQ(exitStatusOf([&] {
                      dropRootRights();
                      fs::rename(directory, shared() / "moved");
                      return replace(directory);
                  }),
                  0);
        fs::remove_all(shared() / "moved");
        const fs::path file = exported(ours).at(0);
        EXPECT_NE(file.parent_path().parent_path(), directory);
        for (const fs::path& path : {file.parent_path().parent_path(), file.parent_path(), file}) {
            struct stat status {};
            ASSERT_EQ(lstat(path.c_str(), &status), 0) << path;
            EXPECT_EQ(status.st_uid, 0U);
            EXPECT_EQ(status.st_mode & 0077U, 0U);
        }
        EXPECT_TRUE(fs::is_empty(shared() / "trap"));
        EXPECT_TRUE(fs::is_empty(directory));
    }
}

} // namespace

} // namespace tavel
