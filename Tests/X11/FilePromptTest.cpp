#include "Linux/X11/X11Reply.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/X11/X11AgentTest.h"

#include <sys/wait.h>
#include <xcb/xcb.h>

#include <csignal>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace tavel {
namespace {

constexpr const char* notPermitted =
    "Renommage : autorise Tavel Bridge dans Accessibilité et Surveillance de "
    "l’entrée, puis réactive l’option.";

constexpr xcb_keycode_t keyOfV = 55; // on Xvfb's keyboard

/// Another program that has grabbed Control+V on the root window.
class OtherShortcut {
public:
    explicit OtherShortcut(const std::string& display) : connection_(xcb_connect(display.c_str(), nullptr)) {
        const X11Reply<xcb_generic_error_t> error(xcb_request_check(
            connection_, xcb_grab_key_checked(connection_, 0, root(), XCB_MOD_MASK_CONTROL, keyOfV,
                                              XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)));
        if (error != nullptr)
            throw std::runtime_error("Control+V cannot be grabbed.");
    }
    ~OtherShortcut() { xcb_disconnect(connection_); }
    OtherShortcut(const OtherShortcut&) = delete;
    OtherShortcut& operator=(const OtherShortcut&) = delete;

    void letGo() {
        const X11Reply<xcb_generic_error_t> error(xcb_request_check(
            connection_, xcb_ungrab_key_checked(connection_, keyOfV, root(), XCB_MOD_MASK_CONTROL)));
    }

private:
    xcb_window_t root() { return xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root; }

    xcb_connection_t* connection_;
};

class FilePrompt : public X11AgentTest {
protected:
    /// Whether the process ignores the signal (proc(5), status, SigIgn: a bit for each, from the lowest).
    static bool hasIgnored(int signal, const AgentProcess& agent) {
        std::ifstream file("/proc/" + std::to_string(agent.processIdentifier()) + "/status");
        const std::string status{std::istreambuf_iterator<char>(file), {}};
        const std::string name = "SigIgn:\t";
        const std::string digits = status.substr(status.find(name) + name.size(), 16);
        return (std::stoull(digits, nullptr, 16) >> (signal - 1) & 1) != 0;
    }

    Json prompt(bool on) {
        return request(agent(), {{"command", "configure_file_prompt"}, {"rename_prompt", on}});
    }
};

TEST_F(FilePrompt, canBeSwitchedOnAndOffAnyNumberOfTimes) {
    for (const bool on : {false, true, true, false, false, true})
        EXPECT_EQ(prompt(on), success(0)) << on;
    expectSilence(agent());
}

TEST_F(FilePrompt, isRefusedWhileAnotherProgramHasTheShortcut) {
    OtherShortcut other(server_.display());
    EXPECT_EQ(prompt(true), failure(notPermitted, 0));
    EXPECT_EQ(prompt(false), success(0));
    other.letGo();
    EXPECT_EQ(prompt(true), success(0));
}

TEST_F(FilePrompt, takesTheShortcutFromNobody) {
    EXPECT_EQ(prompt(true), success(0));
    const OtherShortcut later(server_.display());
    EXPECT_EQ(prompt(false), success(0));
    EXPECT_EQ(prompt(true), success(0)) << "as what it was allowed once is not tried again";
}

/// The library for the bus ignores the signal for the whole process.
TEST_F(FilePrompt, leavesTheBrokenPipeSignalToTheSystem) {
    AgentProcess::Options withBus = x11Options();
    withBus.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nonexistent";
    AgentProcess& withPrompt = start(withBus);
    EXPECT_EQ(request(withPrompt, {{"command", "configure_file_prompt"}, {"rename_prompt", true}}),
              success(0));
    waitUntil([&] { return hasIgnored(SIGPIPE, withPrompt); }, AgentProcess::deadline);
    withPrompt.closeOutput();
    withPrompt.send(pingLine(7));
    const int status = withPrompt.waitForExit();
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGPIPE);
}

TEST_F(FilePrompt, outlivesItsServer) {
    EXPECT_EQ(prompt(true), success(0));
    server_.stop();
    EXPECT_EQ(request(agent(), {{"command", "ping"}}), success(0));
    EXPECT_EQ(prompt(false), success(0));
    EXPECT_EQ(prompt(true), success(0)) << "as of a keyboard that nobody types on";
    agent().closeInput();
    EXPECT_EQ(agent().waitForExit(), 0);
    EXPECT_TRUE(exportDirectories().empty());
}

} // namespace
} // namespace tavel
