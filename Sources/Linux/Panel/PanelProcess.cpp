#include "Linux/Panel/PanelProcess.h"

#include "Linux/Base/Descriptor.h"
#include "Linux/Base/SpawnedProgram.h"

#include <fcntl.h>
#include <glib.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

namespace tavel {

namespace {

constexpr guint reapInterval = 10; // milliseconds

struct Ends {
    Descriptor ours;
    Descriptor theirs;
};

/// Only our end is non-blocking.
Ends makeSocket() {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        throw std::system_error(errno, std::generic_category(), "socketpair");
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

/// Reaps the child if it has ended. True also if somebody else has reaped it; its identifier may then belong
/// to another process.
bool isGone(pid_t process) {
    return waitpid(process, nullptr, WNOHANG) != 0;
}

gboolean reap(gpointer process) {
    return isGone(GPOINTER_TO_INT(process)) ? G_SOURCE_REMOVE : G_SOURCE_CONTINUE;
}

} // namespace

PanelProcess::PanelProcess(const std::filesystem::path& program) {
    Ends channel = makeSocket();
    Ends errors = makeSocket();
    start(program, channel.theirs.number(), errors.theirs.number());
    channel_ = channel.ours.release();
    errors_ = errors.ours.release();
}

PanelProcess::~PanelProcess() {
    close(channel_);
    close(errors_);
    if (isGone(process_))
        return;
    kill(process_, SIGKILL); // not reaped yet, so the identifier is still the child's
    if (!isGone(process_))
        g_timeout_add(reapInterval, reap, GINT_TO_POINTER(process_));
}

void PanelProcess::send(std::string_view text) const {
    const ssize_t sent = ::send(channel_, text.data(), text.size(), MSG_NOSIGNAL);
    if (sent != static_cast<ssize_t>(text.size()))
        shutdown(channel_, SHUT_RDWR);
}

void PanelProcess::start(const std::filesystem::path& program, int childChannel, int childErrors) {
    const std::array descriptors{childChannel, childChannel, childErrors};
    process_ = spawnProgram(program, {}, environ, descriptors);
}

} // namespace tavel
