#include "Linux/Images/Program/FileRuleset.h"

#include <linux/landlock.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace tavel {
namespace {

/// The kernel's structure of today. Kernels take a shorter one, and the header of an older one may lack the
/// later fields.
struct Ruleset {
    std::uint64_t files = 0;
    std::uint64_t network = 0;
    std::uint64_t scopes = 0;
};

constexpr std::uint64_t lowest(unsigned count) {
    return (std::uint64_t{1} << count) - 1;
}

/// How many rights to files each version of Landlock knows, from the first on (landlock(7), "VERSIONS").
constexpr std::array fileRights{13U, 14U, 15U, 15U, 16U};

constexpr long firstWithNetwork = 4; // the rights to bind and to connect TCP sockets
constexpr long firstWithScopes = 6;  // abstract sockets, signals

struct SizedRuleset {
    Ruleset ruleset;
    std::size_t size;
};

SizedRuleset everythingIn(long version) {
    const auto known = static_cast<std::size_t>(version) < fileRights.size()
                           ? static_cast<std::size_t>(version)
                           : fileRights.size();
    SizedRuleset all{{lowest(fileRights.at(known - 1))}, offsetof(Ruleset, network)};
    if (version >= firstWithNetwork) {
        all.ruleset.network = lowest(2);
        all.size = offsetof(Ruleset, scopes);
    }
    if (version >= firstWithScopes) {
        all.ruleset.scopes = lowest(2);
        all.size = sizeof(Ruleset);
    }
    return all;
}

} // namespace

void forbidFilesAndNetwork() {
    const long version =
        syscall(SYS_landlock_create_ruleset, nullptr, std::size_t{0}, LANDLOCK_CREATE_RULESET_VERSION);
    if (version < 1)
        return;
    const SizedRuleset all = everythingIn(version);
    const long ruleset = syscall(SYS_landlock_create_ruleset, &all.ruleset, all.size, 0U);
    if (ruleset < 0)
        return;
    syscall(SYS_landlock_restrict_self, static_cast<int>(ruleset), 0U);
    close(static_cast<int>(ruleset));
}

} // namespace tavel
