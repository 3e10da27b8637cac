#include "Linux/Base/SpawnedProgram.h"

#include "Linux/Base/Descriptor.h"
#include "Linux/Base/Modules.h"
#include "Support/ScopeExit.h"

#include <fcntl.h>
#include <spawn.h>

#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

namespace tavel {

namespace {

void throwUnless(bool isDone, int error, const std::string& what) {
    if (!isDone)
        throw std::system_error(error, std::generic_category(), what);
}

/// Duplicates with numbers that the child uses for nothing else: it would otherwise replace a descriptor
/// before that one has found its place.
std::vector<Descriptor> outOfTheWay(std::span<const int> descriptors, const std::string& what) {
    std::vector<Descriptor> duplicates;
    for (const int descriptor : descriptors) {
        const int lowest = static_cast<int>(descriptors.size());
        duplicates.emplace_back(fcntl(descriptor, F_DUPFD_CLOEXEC, lowest));
        throwUnless(static_cast<bool>(duplicates.back()), errno, what);
    }
    return duplicates;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace

pid_t spawnProgram(const std::filesystem::path& program, std::vector<std::string> arguments,
                   char* const* environment, std::span<const int> descriptors) {
    requireAbsolute(program);
    const std::vector<Descriptor> sources = outOfTheWay(descriptors, program);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    const ScopeExit destroyActions([&] { posix_spawn_file_actions_destroy(&actions); });
    int place = 0;
    for (const Descriptor& source : sources) {
        const int error = posix_spawn_file_actions_adddup2(&actions, source.number(), place++);
        throwUnless(error == 0, error, program);
    }
    // Not every library opens its files with O_CLOEXEC.
    const int error = posix_spawn_file_actions_addclosefrom_np(&actions, place);
    throwUnless(error == 0, error, program);

    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    const ScopeExit destroyAttributes([&] { posix_spawnattr_destroy(&attributes); });
    sigset_t signals;
    sigfillset(&signals);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);

    arguments.insert(arguments.begin(), program.string());
    const std::vector<char*> pointers = pointersTo(arguments);
    pid_t process = -1;
    const int failure =
        posix_spawn(&process, program.c_str(), &actions, &attributes, pointers.data(), environment);
    throwUnless(failure == 0, failure, program);
    return process;
}

} // namespace tavel
