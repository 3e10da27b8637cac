#include "Tests/Mac/Gnustep/PanelDesktop.h"
#include "Tests/Support/TestDirectory.h"
#include "Tests/Support/TestProcess.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/Support/XServer.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

// The tests run in a second process of this program, on a desktop that the first process prepares. GNUstep
// reads its environment when it is loaded, so the environment must be set before. And GNUstep's daemons,
// which detach themselves, must not outlive the tests, however those end.

namespace tavel {

namespace {

constexpr const char* hasDesktop = "TAVEL_TEST_HAS_DESKTOP";

class Desktop {
public:
    Desktop() {
        setenv("DISPLAY", server_.display().c_str(), 1);
        setenv("HOME", directory_.path().c_str(), 1);
        setenv("TMPDIR", directory_.temporaryDirectory().c_str(), 1);
        setenv("TEMP", directory_.temporaryDirectory().c_str(), 1); // where clients look for the daemons
        setenv("LC_ALL", "C.UTF-8", 1);
        setenv(hasDesktop, "yes", 1);
        waitUntil(
            [] { return onDesktop("xprop -root _NET_SUPPORTING_WM_CHECK").find("0x") != std::string::npos; },
            panelDeadline);
    }

private:
    TestDirectory directory_;
    XServer server_;
    TestProcess windowManager_{{"/bin/sh", "-c", "DISPLAY=$0 HOME=$1 exec openbox --sm-disable 2>/dev/null",
                                server_.display(), directory_.path().string()}};
};

/// Runs this program with these arguments and returns its wait status.
int runAgain(char** arguments) {
    const pid_t parent = getpid();
    const pid_t process = fork();
    if (process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() == parent)
            execv(std::filesystem::read_symlink("/proc/self/exe").c_str(), arguments);
        _exit(EXIT_FAILURE);
    }
    int status = 0;
    if (process < 0 || waitpid(process, &status, 0) < 0)
        throw std::system_error(errno, std::generic_category(), "fork");
    return status;
}

void endChildren() {
    do {
        std::ifstream children("/proc/self/task/" + std::to_string(getpid()) + "/children");
        for (pid_t child = 0; children >> child;)
            kill(child, SIGKILL);
    } while (waitpid(-1, nullptr, 0) > 0);
}

int runOnDesktop(char** arguments) {
    prctl(PR_SET_CHILD_SUBREAPER, 1); // detached daemons become children of this process
    const int status = [arguments] {
        const Desktop desktop;
        return runAgain(arguments);
    }();
    endChildren();
    return status == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

} // namespace tavel

int main(int count, char** arguments) {
    std::vector<char*> forTheTests(arguments, arguments + count);
    forTheTests.push_back(nullptr);
    testing::InitGoogleTest(&count, arguments);
    if (GTEST_FLAG_GET(list_tests) || std::getenv(tavel::hasDesktop) != nullptr)
        return RUN_ALL_TESTS();
    return tavel::runOnDesktop(forTheTests.data());
}
