#include "Tests/Wayland/Sway.h"

#include "Linux/Base/Descriptor.h"
#include "Tests/Support/WaitUntil.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace tavel {

namespace {

constexpr uid_t nobody = 65534;

constexpr const char* script = R"(
    cd "$0" && echo 'xwayland disable' >configuration && unset DISPLAY WAYLAND_DISPLAY SWAYSOCK &&
    HOME=$0 XDG_RUNTIME_DIR=$0 WLR_BACKENDS=headless WLR_RENDERER=pixman WLR_LIBINPUT_NO_DEVICES=1 \
        exec sway --config configuration >/dev/null 2>&1)";

/// sway refuses to run as root, who can connect to it all the same.
std::vector<std::string> commandLine(const std::filesystem::path& directory) {
    std::vector<std::string> command{"/bin/sh", "-c", script, directory.string()};
    if (geteuid() != 0)
        return command;
    if (chown(directory.c_str(), nobody, nobody) != 0)
        throw std::system_error(errno, std::generic_category(), directory.string());
    const std::string user = std::to_string(nobody);
    const std::vector<std::string> asNobody{"/usr/bin/setpriv", "--reuid", user,
                                            "--regid",          user,      "--clear-groups"};
    command.insert(command.begin(), asNobody.begin(), asNobody.end());
    return command;
}

bool takesConnections(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    const Descriptor connection(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    return connect(connection.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

} // namespace

Sway::Sway() : process_(commandLine(directory_.path())) {
    waitUntil(
        [this] {
            for (const auto& entry : std::filesystem::directory_iterator(directory_.path())) {
                if (entry.is_socket() && entry.path().filename().string().starts_with("wayland-"))
                    display_ = entry.path().string();
            }
            return !display_.empty() && takesConnections(display_);
        },
        TestProcess::deadline);
}

} // namespace tavel
