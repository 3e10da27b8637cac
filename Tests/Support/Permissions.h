#pragma once

#include <sys/stat.h>

#include <filesystem>

namespace tavel {

/// Changes the umask of this process until it goes.
class UmaskDuringTest {
public:
    explicit UmaskDuringTest(mode_t mask) : former_(umask(mask)) {}
    ~UmaskDuringTest() { umask(former_); }
    UmaskDuringTest(const UmaskDuringTest&) = delete;
    UmaskDuringTest& operator=(const UmaskDuringTest&) = delete;

private:
    mode_t former_;
};

/// The permissions of what is at the path, of a link itself. ~0 if nothing is there.
inline unsigned modeOf(const std::filesystem::path& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : ~0U;
}

} // namespace tavel
