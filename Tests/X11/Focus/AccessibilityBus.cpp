#include "Tests/X11/Focus/AccessibilityBus.h"

#include "Tests/Support/WaitUntil.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <utility>
#include <vector>

namespace tavel {

namespace {

constexpr std::chrono::seconds busTimeOut{30};

/// Returns null without a bus at that address.
GioPointer<GDBusConnection> tryToConnect(const std::string& address) {
    constexpr auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                             G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    return GioPointer<GDBusConnection>(
        g_dbus_connection_new_for_address_sync(address.c_str(), flags, nullptr, nullptr, nullptr));
}

GioPointer<GDBusConnection> connectTo(const std::string& address) {
    auto connection = tryToConnect(address);
    if (connection == nullptr)
        throw std::runtime_error("There is no bus at " + address);
    return connection;
}

pid_t processOf(GDBusConnection* connection, const char* name) {
    const auto reply =
        callOnBus(connection, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                  "GetConnectionUnixProcessID", g_variant_new("(s)", name));
    std::uint32_t process = 0;
    g_variant_get(reply.get(), "(u)", &process);
    return static_cast<pid_t>(process);
}

/// Prepares everything before the fork, because the child must not allocate memory.
pid_t startProgram(std::vector<std::string> arguments, std::vector<std::string> environment) {
    const auto pointers = [](std::vector<std::string>& texts) {
        std::vector<char*> result;
        for (std::string& text : texts)
            result.push_back(text.data());
        result.push_back(nullptr);
        return result;
    };
    const std::vector<char*> argumentPointers = pointers(arguments);
    const std::vector<char*> environmentPointers = pointers(environment);
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (getppid() != parent)
            _exit(127);
        const int null = open("/dev/null", O_RDWR);
        for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            dup2(null, standard); // keeps their messages out of the tests' output
        close_range(3, ~0U, 0);
        execve(argumentPointers.front(), argumentPointers.data(), environmentPointers.data());
        _exit(127);
    }
    if (child < 0)
        throw std::runtime_error("fork");
    return child;
}

/// Whether the process has ended. It may remain as a zombie until its parent waits for it.
bool hasEnded(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string status;
    std::getline(file, status);
    const std::size_t nameEnd = status.rfind(") ");
    return nameEnd == std::string::npos || status[nameEnd + 2] == 'Z' || status[nameEnd + 2] == 'X';
}

void killAndAwait(pid_t process) {
    if (process <= 0)
        return;
    kill(process, SIGKILL);
    waitUntil([process] { return hasEnded(process); }, busTimeOut);
}

} // namespace

GioPointer<GVariant> callOnBus(GDBusConnection* connection, const char* program, const char* path,
                               const char* interface, const char* method, GVariant* arguments) {
    GioPointer<GVariant> reply(g_dbus_connection_call_sync(
        connection, program, path, interface, method, arguments, nullptr, G_DBUS_CALL_FLAGS_NONE,
        static_cast<int>(std::chrono::milliseconds(busTimeOut).count()), nullptr, nullptr));
    if (reply == nullptr)
        throw std::runtime_error(std::string("No reply to ") + method);
    return reply;
}

TestAccessibilityBus::TestAccessibilityBus(const std::filesystem::path& runtimeDirectory,
                                           const std::string& display)
    : sessionAddress_("unix:path=" + (runtimeDirectory / "bus").string()) {
    session_ =
        startProgram({"/usr/bin/dbus-daemon", "--session", "--nofork", "--nopidfile", "--nosyslog",
                      "--address=" + sessionAddress_},
                     {"DISPLAY=" + display, "XDG_RUNTIME_DIR=" + runtimeDirectory.string(),
                      "HOME=" + runtimeDirectory.string(), "PATH=/usr/bin:/bin", "GSETTINGS_BACKEND=memory"});
    waitUntil([&] { return tryToConnect(sessionAddress_) != nullptr; }, busTimeOut);
    start();
}

void TestAccessibilityBus::start() {
    const auto session = connectTo(sessionAddress_);
    const auto reply =
        callOnBus(session.get(), "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", nullptr);
    const char* address = nullptr;
    g_variant_get(reply.get(), "(&s)", &address);
    address_ = address;
    launcher_ = processOf(session.get(), "org.a11y.Bus");
    const auto bus = connect();
    callOnBus(bus.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
              "StartServiceByName", g_variant_new("(su)", "org.a11y.atspi.Registry", 0));
    bus_ = processOf(bus.get(), "org.freedesktop.DBus");
    registry_ = processOf(bus.get(), "org.a11y.atspi.Registry");
}

TestAccessibilityBus::~TestAccessibilityBus() {
    stop();
    kill(session_, SIGKILL);
    waitpid(session_, nullptr, 0);
}

void TestAccessibilityBus::stop() {
    for (pid_t* const service : {&launcher_, &bus_, &registry_})
        killAndAwait(std::exchange(*service, -1));
}

GioPointer<GDBusConnection> TestAccessibilityBus::connect() const {
    return connectTo(address_);
}

} // namespace tavel
