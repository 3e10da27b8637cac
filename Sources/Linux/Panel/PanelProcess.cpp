#include "Linux/Panel/PanelProcess.h"

#include "Linux/Base/Modules.h"
#include "Support/ScopeExit.h"

#include <fcntl.h>
#include <glib.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <string>
#include <system_error>
#include <utility>

namespace tavel {

namespace {

constexpr guint reapInterval = 10; // milliseconds

class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0)
            close(number_);
    }
    Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
    Descriptor& operator=(Descriptor&&) = delete;

    int number() const { return number_; }
    int release() { return std::exchange(number_, -1); }

private:
    int number_;
};

struct Ends {
    Descriptor ours;
    Descriptor theirs;
};

void throwUnless(bool isDone, int error, const std::string& what) {
    if (!isDone)
        throw std::system_error(error, std::generic_category(), what);
}

/// Only our end is non-blocking.
Ends makeSocket() {
    std::array<int, 2> ends{};
    throwUnless(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) == 0, errno, "socketpair");
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
    requireAbsolute(program);
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
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    const ScopeExit destroyActions([&] { posix_spawn_file_actions_destroy(&actions); });
    posix_spawn_file_actions_adddup2(&actions, childChannel, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, childChannel, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, childErrors, STDERR_FILENO);
    // Not every library opens its files with O_CLOEXEC.
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);

    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    const ScopeExit destroyAttributes([&] { posix_spawnattr_destroy(&attributes); });
    sigset_t signals;
    sigfillset(&signals);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);

    std::string path = program;
    const std::array<char*, 2> arguments{path.data(), nullptr};
    const int error = posix_spawn(&process_, path.c_str(), &actions, &attributes, arguments.data(), environ);
    throwUnless(error == 0, error, path);
}

} // namespace tavel
