#pragma once

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <string>
#include <system_error>

namespace tavel {

/// Puts this process and its children into a view of the file system of their own, in which a mount is theirs
/// alone and goes with them. Any user may have that by becoming the root of a user namespace; a process with
/// several threads (a sanitizer's) may not, and root needs not.
inline void enterOwnFileSystemView() {
    const auto user = std::to_string(geteuid());
    const auto group = std::to_string(getegid());
    const int namespaces = geteuid() == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER;
    if (unshare(namespaces) != 0)
        throw std::system_error(
            errno, std::generic_category(),
            "This test mounts a small file system, for which it needs root or user namespaces");
    if ((namespaces & CLONE_NEWUSER) != 0) {
        std::ofstream("/proc/self/setgroups") << "deny";
        std::ofstream("/proc/self/uid_map") << user + " " + user + " 1";
        std::ofstream("/proc/self/gid_map") << group + " " + group + " 1";
    }
    if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        throw std::system_error(errno, std::generic_category(), "The mounts cannot be made private");
}

} // namespace tavel
