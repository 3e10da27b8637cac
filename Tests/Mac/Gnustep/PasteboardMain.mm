#include "Tests/Mac/Gnustep/PasteboardServer.h"
#include "Tests/Support/TestDirectory.h"

#import <Foundation/Foundation.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

// The tests run in a second process of this program, with a directory that the first process prepares.
// GNUstep reads its environment when it is loaded, so the environment must be set before. And nothing must
// stay behind, however the tests end.

namespace tavel {

namespace {

constexpr const char* isAlone = "TAVEL_TEST_IS_ALONE";

class ServerOfTheTests final : public testing::Environment {
    void SetUp() override { PasteboardServer::ofTheTests().start(); }
    void TearDown() override { PasteboardServer::ofTheTests().stop(); }
};

/// Runs each test within an autorelease pool, as an event loop does with each event.
class PoolOfEachTest final : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { pool_ = [[NSAutoreleasePool alloc] init]; }
    void OnTestEnd(const testing::TestInfo&) override { [pool_ release]; }

    NSAutoreleasePool* pool_ = nil;
};

int runAlone(char** arguments) {
    const TestDirectory directory;
    setenv(isAlone, "yes", 1);
    // Not the user's settings: GNUstep does not find them through HOME.
    const std::string settings = (directory.path() / "settings").string();
    setenv("GNUSTEP_CONFIG_FILE",
           directory.createFile("GNUstep.conf", "GNUSTEP_USER_DEFAULTS_DIR=" + settings + "\n").c_str(), 1);
    setenv(PasteboardServer::directoryVariable, directory.temporaryDirectory().c_str(), 1);
    unsetenv("DISPLAY"); // the server would join this display's clipboard
    pid_t child = -1;
    int status = 0;
    if (posix_spawn(&child, "/proc/self/exe", nullptr, nullptr, arguments, environ) != 0 ||
        waitpid(child, &status, 0) != child)
        return EXIT_FAILURE;
    return status == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

} // namespace tavel

int main(int count, char** arguments) {
    std::vector<char*> forTheTests(arguments, arguments + count);
    forTheTests.push_back(nullptr);
    testing::InitGoogleTest(&count, arguments);
    if (GTEST_FLAG_GET(list_tests))
        return RUN_ALL_TESTS();
    if (std::getenv(tavel::isAlone) == nullptr)
        std::_Exit(tavel::runAlone(forTheTests.data())); // no leak check: this process only waits
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    testing::AddGlobalTestEnvironment(new tavel::ServerOfTheTests);
    testing::UnitTest::GetInstance()->listeners().Append(new tavel::PoolOfEachTest);
    return RUN_ALL_TESTS();
}
