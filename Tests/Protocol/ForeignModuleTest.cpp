#include "Tests/Protocol/ExportTest.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>

namespace tavel {

namespace {

namespace fs = std::filesystem;

/// A file system view of its own, for which any other user than root needs user namespaces.
std::string ownView() {
    return geteuid() == 0 ? "unshare --mount" : "unshare --mount --map-root-user";
}

class ForeignModule : public AgentTest {};

/// Without /proc, a program does not know where it is. Beside its working directory may stand anybody's
/// program.
TEST_F(ForeignModule, isNotStartedFromBesideTheWorkingDirectory) {
    const fs::path foreign = directory_.path() / "foreign";
    const fs::path working = foreign / "working";
    fs::create_directories(working);
    fs::create_directories(foreign / "lib" / "tavel");
    const fs::path images = foreign / "lib" / "tavel" / "tavel-images";
    std::ofstream(images) << "#!/bin/sh\n: >'" << (foreign / "started").string() << "'\n";
    fs::permissions(images, fs::perms::owner_all);
    const std::string hideProc = "mount -t tmpfs none /proc";
    if (std::system((ownView() + " sh -c '" + hideProc + "' 2>/dev/null").c_str()) != 0)
        GTEST_SKIP() << "No file system can be mounted here, so the test cannot hide /proc.";

    AgentProcess::Options lost = options();
    lost.launcher = {"/bin/sh", "-c",
                     "exec " + ownView() + " sh -c '" + hideProc + R"( && cd "$0" && exec "$@"' "$0" "$@")",
                     working.string()};
    AgentProcess& agent = start(lost);
    const std::int64_t picture =
        otherApplication().copy({{representation("public.png", readPicture("jpeg-baseline.jpg"))}});
    EXPECT_EQ(agent.nextMessage(), announcement(picture));
    waitForPolls();
    const std::int64_t sequence = otherApplication().copyText("hi");
    EXPECT_EQ(agent.nextMessage(), announcement(sequence)) << "as without the program, nothing is converted";
    EXPECT_EQ(agent.nextMessage(), textEvent("aGk", 2, sequence));
    EXPECT_FALSE(fs::exists(foreign / "started"));
}

} // namespace

} // namespace tavel
