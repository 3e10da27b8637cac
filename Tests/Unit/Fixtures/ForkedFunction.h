#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <optional>
#include <system_error>

namespace tavel {

/// Runs `body` in a child process, which may ruin what belongs to a whole process, and gives the exit status
/// that `body` returned. Nothing if the child was killed.
inline std::optional<int> exitStatusOf(const std::function<int()>& body) {
    const pid_t child = fork();
    if (child < 0)
        throw std::system_error(errno, std::generic_category(), "fork");
    if (child == 0)
        _exit(body());
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR)
            throw std::system_error(errno, std::generic_category(), "waitpid");
    }
    return WIFEXITED(status) ? std::optional(WEXITSTATUS(status)) : std::nullopt;
}

/// For such a child: what the modes of files refuse is refused to root too from here on.
inline void dropRootRights() {
    constexpr uid_t nobody = 65534;
    if (geteuid() == 0 && setuid(nobody) != 0)
        _exit(126);
}

/// The same, for a process that has to own this file or directory.
inline void giveToNobodyAndBecomeNobody(const std::filesystem::path& path) {
    constexpr uid_t nobody = 65534;
    if (geteuid() == 0 && chown(path.c_str(), nobody, nobody) != 0)
        _exit(125);
    dropRootRights();
}

} // namespace tavel
