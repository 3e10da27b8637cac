#include "Linux/Images/Program/ImageProgram.h"

#include "Linux/Images/Program/Preparation.h"
#include "Support/FreeMemory.h"

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

namespace tavel {
namespace {

/// Not by way of exit(3): static objects are of no interest, and a sanitizer would look for leaks, for which
/// it traces the process.
[[noreturn]] void end(bool isDone) {
    _exit(isDone ? 0 : 1);
}

/// The signal also comes when the thread ends that started this process.
void dieWith(pid_t agent) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != agent) // it has ended before
        end(false);
}

/// The whole file behind the descriptor, mapped for good. Closes the descriptor. Empty on failure.
std::span<char> mapFile(int descriptor, int protection) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || status.st_size <= 0)
        return {};
    const auto size = static_cast<std::size_t>(status.st_size);
    void* const address = mmap(nullptr, size, protection, MAP_SHARED, descriptor, 0);
    close(descriptor);
    return address == MAP_FAILED ? std::span<char>() : std::span(static_cast<char*>(address), size);
}

} // namespace

void runImageProgram(int count, char** arguments, void (*lock)(), ImageWork work) {
    const auto request = readArguments({arguments + 1, arguments + count});
    if (!request)
        end(false);
    dieWith(static_cast<pid_t>(request->agent));
    useOneHeap(); // the C library opens a file before it makes any other heap smaller
    const std::span<const char> picture = mapFile(pictureDescriptor, PROT_READ);
    const std::span<char> answerFile = mapFile(answerDescriptor, PROT_READ | PROT_WRITE);
    if (picture.empty() || answerFile.size() != answerFileSize || !prepareForType(request->typeIdentifier))
        end(false);
    lock();
    end(work(*request, Bytes(nullptr, picture.data(), picture.size()), answerFile));
}

} // namespace tavel
