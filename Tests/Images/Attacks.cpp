#include "Tests/Images/Attacks.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

namespace tavel {
namespace {

struct Attack {
    std::string_view name;
    bool (*succeeds)(std::uint64_t number);
};

bool opensAFile(std::uint64_t) {
    return open("/etc/passwd", O_RDONLY) >= 0;
}

bool connects(std::uint64_t) {
    const int server = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{AF_UNIX, ""};
    socklen_t size = sizeof(sa_family_t); // the system chooses a name
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (server < 0 || bind(server, generic, size) != 0 || listen(server, 1) != 0)
        return false;
    size = sizeof address;
    getsockname(server, generic, &size);
    return connect(socket(AF_UNIX, SOCK_STREAM, 0), generic, size) == 0;
}

bool forks(std::uint64_t) {
    const pid_t child = fork();
    if (child == 0)
        _exit(0);
    return child > 0 && waitpid(child, nullptr, 0) == child;
}

/// The program that takes over leaves the answer as it is.
bool executes(std::uint64_t) {
    return execl("/bin/true", "/bin/true", nullptr) == 0;
}

bool writesToStandardError(std::uint64_t) {
    return write(STDERR_FILENO, "x", 1) == 1;
}

constexpr std::string_view secret = "secret";

bool readsTheAgent(std::uint64_t address) {
    std::array<char, secret.size()> found{};
    const iovec here{found.data(), found.size()};
    const iovec there{reinterpret_cast<void*>(address), found.size()};
    process_vm_readv(getppid(), &here, 1, &there, 1, 0);
    return std::string_view(found.data(), found.size()) == secret;
}

bool opensTheAgent(std::uint64_t address) {
    std::array<char, secret.size()> found{};
    const int memory = open(("/proc/" + std::to_string(getppid()) + "/mem").c_str(), O_RDONLY);
    pread(memory, found.data(), found.size(), static_cast<off_t>(address));
    return std::string_view(found.data(), found.size()) == secret;
}

bool signalsTheAgent(std::uint64_t) {
    return kill(getppid(), 0) == 0;
}

constexpr std::size_t page = 4096;

bool mapsCode(std::uint64_t) {
    return mmap(nullptr, page, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) != MAP_FAILED;
}

bool turnsDataIntoCode(std::uint64_t) {
    void* const data = mmap(nullptr, page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return data != MAP_FAILED && mprotect(data, page, PROT_READ | PROT_EXEC) == 0;
}

bool allocates(std::uint64_t size) {
    constexpr int flags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE;
    return mmap(nullptr, size, PROT_READ | PROT_WRITE, flags, -1, 0) != MAP_FAILED;
}

bool spins(std::uint64_t) {
    for (volatile bool goesOn = true; goesOn;) {
    }
    return true;
}

bool diesBy(std::uint64_t number) {
    return std::raise(static_cast<int>(number)) == 0;
}

/// These two are none: decoders do both.
bool complains(std::uint64_t) {
    std::fputs("a decoder's complaint\n", stderr);
    std::puts("a decoder's remark");
    std::fflush(stdout);
    return true;
}

bool startsAThread(std::uint64_t) {
    bool hasRun = false;
    std::thread([&] { hasRun = true; }).join();
    return hasRun;
}

constexpr std::array attacks{
    Attack{"open-file", opensAFile},
    Attack{"connect", connects},
    Attack{"fork", forks},
    Attack{"execute", executes},
    Attack{"write-to-standard-error", writesToStandardError},
    Attack{"read-agent", readsTheAgent},
    Attack{"open-agent", opensTheAgent},
    Attack{"signal-agent", signalsTheAgent},
    Attack{"map-code", mapsCode},
    Attack{"turn-data-into-code", turnsDataIntoCode},
    Attack{"allocate", allocates},
    Attack{"spin", spins},
    Attack{"die-by", diesBy},
    Attack{"complain", complains},
    Attack{"start-thread", startsAThread},
};

void put(std::span<char> answerFile, const ImageAnswer& answer) {
    std::memcpy(answerFile.data(), &answer, sizeof answer);
}

/// Answers with nonsense of that number.
bool answerWithNonsense(const ImageRequest& request, std::uint64_t number, std::span<char> answerFile) {
    ImageAnswer answer{answerMark, static_cast<std::uint64_t>(request.task), 1, 1, 1, 1};
    switch (number) {
    case 0:
        return true; // without any answer
    case 1:
        answer.mark.back() = '?';
        break;
    case 2:
        answer.task ^= 1;
        break;
    case 3:
        answer.length = answerFile.size() - sizeof answer + 1;
        break;
    case 4:
        answer.length = ~std::uint64_t{0};
        break;
    case 5:
        answer.length = 0;
        answer.hasAlpha = 2;
        answer.width = 0;
        break;
    case 6:
        put(answerFile, answer);
        return false; // an answer, but no success
    default:
        break; // no nonsense
    }
    put(answerFile, answer);
    return true;
}

/// Answers with what this process has inherited, instead of a picture.
void reportInheritance(const ImageRequest& request, std::span<char> answerFile) {
    std::ostringstream report;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        report << std::filesystem::read_symlink(entry, ignored).string() << '\n';
    }
    for (char** variable = environ; *variable != nullptr; ++variable)
        report << "variable " << *variable << '\n';
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        report << line << '\n';
    const std::string text = report.str();
    text.copy(answerFile.data() + sizeof(ImageAnswer), text.size());
    put(answerFile, {answerMark, static_cast<std::uint64_t>(request.task), 0, 0, 0, text.size()});
}

} // namespace

bool attack(const ImageRequest& request, const Bytes& picture, std::span<char> answerFile) {
    const std::string order(picture.view().substr(picture.view().rfind('\n') + 1));
    const std::string name = order.substr(0, order.find(' '));
    const std::uint64_t number = std::strtoull(order.c_str() + name.size(), nullptr, 10);
    if (name == "answer")
        return answerWithNonsense(request, number, answerFile);
    if (name == "report") {
        reportInheritance(request, answerFile);
        return true;
    }
    // Given before the attack: one that ends the process must not be believed either.
    put(answerFile, {answerMark, static_cast<std::uint64_t>(request.task), 0, 0, 1, 0});
    for (const Attack& known : attacks) {
        if (known.name == name)
            return known.succeeds(number);
    }
    std::abort();
}

} // namespace tavel
