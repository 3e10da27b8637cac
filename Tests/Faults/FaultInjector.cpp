// Preloaded into the agent (LD_PRELOAD), this library makes one operation of one kind fail. Variables say
// which:
//   TAVEL_FAULT       memory, thread, or the name of a system call's function
//   TAVEL_FAULT_AT    the operation to fail, counted from 1 since the start of main; 0 fails none
//   TAVEL_FAULT_ERROR the errno value of a failing system call
//   TAVEL_FAULT_TRACE if set, the stack of the failing operation goes to standard error
//   TAVEL_FAULT_COUNT a file of 16 bytes: the number of operations so far, and whether one has failed
//
// Counted is what the agent's own code and its C++ libraries do. GLib ends the process when an allocation
// fails, and the X client library ends the connection; both by design, so operations that they ask for are
// left alone.

#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
}

namespace {

struct Counts {
    std::atomic<std::uint64_t> operations;
    std::atomic<std::uint64_t> failed;
};

Counts localCounts;
Counts* counts = &localCounts;
std::string_view kind;
std::uint64_t failAt = 0;
int error = 0;
std::atomic<bool> armed = false;

/// The libraries whose operations count, and the agent itself.
constexpr std::array ownNames{std::string_view("TavelClipboardAgent"), std::string_view("tavel-"),
                              std::string_view("libstdc++"),           std::string_view("liblmdb"),
                              std::string_view("libsimdjson"),         std::string_view("libutf8proc")};

bool isOwnObject(const void* address) {
    Dl_info info{};
    if (dladdr(address, &info) == 0 || info.dli_fname == nullptr)
        return false;
    std::string_view name = info.dli_fname;
    name = name.substr(name.rfind('/') + 1);
    for (const std::string_view own : ownNames) {
        if (name.starts_with(own))
            return true;
    }
    return false;
}

/// Like isOwnObject. Remembers the answers, as looking up takes long.
bool isOwn(const void* address) {
    static std::array<std::atomic<std::uintptr_t>, 65536>
        known; // an address, its last bit free for the answer
    const auto value = reinterpret_cast<std::uintptr_t>(address);
    auto& entry = known[(value >> 1) % known.size()];
    const std::uintptr_t found = entry;
    if ((found >> 1) == value && found != 0)
        return (found & 1) != 0;
    const bool own = isOwnObject(address);
    entry = (value << 1) | (own ? 1 : 0);
    return own;
}

/// For the hunt for a defect. addr2line makes lines of the addresses.
void printStack() {
    armed = false; // this may allocate
    std::array<void*, 40> frames{};
    backtrace_symbols_fd(frames.data(), backtrace(frames.data(), static_cast<int>(frames.size())),
                         STDERR_FILENO);
    armed = true;
}

/// Whether the operation that `caller` asks for is the one to fail.
bool fails(std::string_view operation, const void* caller) {
    if (!armed || operation != kind || !isOwn(caller))
        return false;
    const bool failing = ++counts->operations == failAt;
    if (failing) {
        counts->failed = 1;
        if (getenv("TAVEL_FAULT_TRACE") != nullptr)
            printStack();
    }
    return failing;
}

bool failsCall(std::string_view call, const void* caller) {
    const bool failing = fails(call, caller);
    if (failing)
        errno = error;
    return failing;
}

template <typename Function>
Function* real(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// Reading and writing the protocol's pipes may be interrupted. That any other failure loses a line is
/// documented.
bool failsTransfer(std::string_view call, int descriptor, const void* caller) {
    static const auto realStatus = real<int(int, struct stat*)>("fstat");
    struct stat status {};
    const bool isPipe = realStatus(descriptor, &status) == 0 && S_ISFIFO(status.st_mode);
    return !(isPipe && error != EINTR && error != EAGAIN) && failsCall(call, caller);
}

int (*realMain)(int, char**, char**) = nullptr;

std::string_view variable(const char* name) {
    const char* const value = getenv(name);
    return value == nullptr ? std::string_view() : value;
}

int armedMain(int argc, char** argv, char** environment) {
    kind = variable("TAVEL_FAULT");
    failAt = std::strtoull(variable("TAVEL_FAULT_AT").data(), nullptr, 10);
    error = std::atoi(variable("TAVEL_FAULT_ERROR").data());
    const int file = open(variable("TAVEL_FAULT_COUNT").data(), O_RDWR | O_CLOEXEC);
    void* const shared = mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    if (shared == MAP_FAILED)
        abort();
    counts = static_cast<Counts*>(shared);
    armed = true;
    return realMain(argc, argv, environment);
}

mode_t modeFrom(int flags, va_list& arguments) {
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

void* allocate(size_t size, const void* caller) {
    void* const block = fails("memory", caller) ? nullptr : __libc_malloc(size == 0 ? 1 : size);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

void* allocate(size_t size, std::align_val_t alignment, const void* caller) {
    void* const block =
        fails("memory", caller) ? nullptr : __libc_memalign(static_cast<size_t>(alignment), size);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

} // namespace

#define CALLER __builtin_return_address(0)

extern "C" int __libc_start_main(int (*main)(int, char**, char**), int argc, char** argv, void (*init)(),
                                 void (*fini)(), void (*loaderFini)(), void* stackEnd) {
    realMain = main;
    const auto start = real<decltype(__libc_start_main)>("__libc_start_main");
    const std::string_view program = argv[0];
    const bool isAgent = program.ends_with("TavelClipboardAgent") && getenv("TAVEL_FAULT") != nullptr;
    return start(isAgent ? armedMain : main, argc, argv, init, fini, loaderFini, stackEnd);
}

// Memory

void* operator new(size_t size) {
    return allocate(size, CALLER);
}
void* operator new[](size_t size) {
    return allocate(size, CALLER);
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return fails("memory", CALLER) ? nullptr : __libc_malloc(size == 0 ? 1 : size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
    return fails("memory", CALLER) ? nullptr : __libc_malloc(size == 0 ? 1 : size);
}
void* operator new(size_t size, std::align_val_t alignment) {
    return allocate(size, alignment, CALLER);
}
void* operator new[](size_t size, std::align_val_t alignment) {
    return allocate(size, alignment, CALLER);
}

// The C++ library allocates exceptions and thread stacks in C; those have reserves of their own.
static bool failsInC(const void* caller) {
    static const void* const cxxLibrary = dlsym(RTLD_NEXT, "__cxa_allocate_exception");
    if (!armed || kind != "memory")
        return false;
    Dl_info of{};
    Dl_info library{};
    return (dladdr(caller, &of) == 0 || dladdr(cxxLibrary, &library) == 0 ||
            of.dli_fbase != library.dli_fbase) &&
           fails("memory", caller);
}

extern "C" void* malloc(size_t size) {
    if (failsInC(CALLER)) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_malloc(size);
}
extern "C" void* calloc(size_t count, size_t size) {
    if (failsInC(CALLER)) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_calloc(count, size);
}
extern "C" void* realloc(void* block, size_t size) {
    if (failsInC(CALLER)) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_realloc(block, size);
}
extern "C" void* aligned_alloc(size_t alignment, size_t size) {
    if (failsInC(CALLER)) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_memalign(alignment, size);
}
extern "C" int posix_memalign(void** block, size_t alignment, size_t size) {
    *block = failsInC(CALLER) ? nullptr : __libc_memalign(alignment, size);
    return *block == nullptr ? ENOMEM : 0;
}

// Threads

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*function)(void*),
                              void* argument) {
    static const auto call = real<decltype(pthread_create)>("pthread_create");
    return fails("thread", CALLER) ? EAGAIN : call(thread, attributes, function, argument);
}

// System calls

// A function with its parameters and its arguments, which fails with -1.
#define CALL(function, counted, parameters, arguments)                                                       \
    extern "C" int function parameters {                                                                     \
        static const auto call = real<int parameters>(#function);                                            \
        return failsCall(counted, CALLER) ? -1 : call arguments;                                             \
    }
#define TRANSFER(function, counted, parameters, arguments)                                                   \
    extern "C" ssize_t function parameters {                                                                 \
        static const auto call = real<ssize_t parameters>(#function);                                        \
        return failsTransfer(counted, file, CALLER) ? -1 : call arguments;                                   \
    }
#define OPEN(function, counted, parameters, last, arguments)                                                 \
    extern "C" int function parameters {                                                                     \
        static const auto call = real<int parameters>(#function);                                            \
        va_list list;                                                                                        \
        va_start(list, last);                                                                                \
        const mode_t mode = modeFrom(last, list);                                                            \
        va_end(list);                                                                                        \
        return failsCall(counted, CALLER) ? -1 : call arguments;                                             \
    }

OPEN(open, "open", (const char* path, int flags, ...), flags, (path, flags, mode))
OPEN(open64, "open", (const char* path, int flags, ...), flags, (path, flags, mode))
OPEN(openat, "open", (int directory, const char* path, int flags, ...), flags, (directory, path, flags, mode))
OPEN(openat64, "open", (int directory, const char* path, int flags, ...), flags,
     (directory, path, flags, mode))
TRANSFER(read, "read", (int file, void* target, size_t size), (file, target, size))
TRANSFER(pread, "pread", (int file, void* target, size_t size, off_t at), (file, target, size, at))
TRANSFER(pread64, "pread", (int file, void* target, size_t size, off64_t at), (file, target, size, at))
TRANSFER(write, "write", (int file, const void* source, size_t size), (file, source, size))
TRANSFER(pwrite, "pwrite", (int file, const void* source, size_t size, off_t at), (file, source, size, at))
TRANSFER(pwrite64, "pwrite", (int file, const void* source, size_t size, off64_t at),
         (file, source, size, at))
CALL(mkdir, "mkdir", (const char* path, mode_t mode), (path, mode))
CALL(mkdirat, "mkdir", (int directory, const char* path, mode_t mode), (directory, path, mode))
CALL(rename, "rename", (const char* from, const char* to), (from, to))
CALL(renameat, "rename", (int a, const char* from, int b, const char* to), (a, from, b, to))
CALL(chmod, "chmod", (const char* path, mode_t mode), (path, mode))
CALL(fchmod, "chmod", (int file, mode_t mode), (file, mode))
CALL(fchmodat, "chmod", (int directory, const char* path, mode_t mode, int flags),
     (directory, path, mode, flags))
CALL(ftruncate, "ftruncate", (int file, off_t size), (file, size))
CALL(ftruncate64, "ftruncate", (int file, off64_t size), (file, size))
CALL(fsync, "fsync", (int file), (file))
CALL(fdatasync, "fsync", (int file), (file))
CALL(msync, "fsync", (void* address, size_t size, int flags), (address, size, flags))
CALL(stat, "stat", (const char* path, struct stat* status), (path, status))
CALL(stat64, "stat", (const char* path, struct stat64* status), (path, status))
CALL(lstat, "stat", (const char* path, struct stat* status), (path, status))
CALL(lstat64, "stat", (const char* path, struct stat64* status), (path, status))
CALL(fstat, "stat", (int file, struct stat* status), (file, status))
CALL(fstat64, "stat", (int file, struct stat64* status), (file, status))
CALL(fstatat, "stat", (int directory, const char* path, struct stat* status, int flags),
     (directory, path, status, flags))
CALL(fstatat64, "stat", (int directory, const char* path, struct stat64* status, int flags),
     (directory, path, status, flags))
CALL(unlink, "unlink", (const char* path), (path))
CALL(unlinkat, "unlink", (int directory, const char* path, int flags), (directory, path, flags))
CALL(rmdir, "unlink", (const char* path), (path))
CALL(remove, "unlink", (const char* path), (path))
CALL(flock, "flock", (int file, int operation), (file, operation))
CALL(madvise, "madvise", (void* address, size_t size, int advice), (address, size, advice))
CALL(pipe2, "pipe", (int* ends, int flags), (ends, flags))
CALL(pidfd_open, "pidfd", (pid_t process, unsigned flags), (process, flags))
CALL(inotify_init1, "inotify", (int flags), (flags))
CALL(inotify_add_watch, "inotify", (int events, const char* path, std::uint32_t mask), (events, path, mask))
CALL(futimens, "utime", (int file, const struct timespec* times), (file, times))
CALL(poll, "poll", (struct pollfd * files, nfds_t count, int wait), (files, count, wait))
CALL(setpriority, "setpriority", (__priority_which_t which, id_t who, int value), (which, who, value))

extern "C" int fcntl(int file, int command, ...) {
    static const auto call = real<int(int, int, ...)>("fcntl");
    va_list list;
    va_start(list, command);
    void* const argument = va_arg(list, void*);
    va_end(list);
    return failsCall("fcntl", CALLER) ? -1 : call(file, command, argument);
}

extern "C" int fcntl64(int file, int command, ...) {
    static const auto call = real<int(int, int, ...)>("fcntl64");
    va_list list;
    va_start(list, command);
    void* const argument = va_arg(list, void*);
    va_end(list);
    return failsCall("fcntl", CALLER) ? -1 : call(file, command, argument);
}

/// Linux closes the descriptor whatever it reports.
extern "C" int close(int file) {
    static const auto call = real<int(int)>("close");
    const bool failing = fails("close", CALLER);
    const int result = call(file);
    if (failing)
        errno = error;
    return failing ? -1 : result;
}

extern "C" void* mmap(void* address, size_t size, int protection, int flags, int file,
                      off_t offset) noexcept {
    static const auto call = real<void*(void*, size_t, int, int, int, off_t)>("mmap");
    return failsCall("mmap", CALLER) ? MAP_FAILED : call(address, size, protection, flags, file, offset);
}

extern "C" void* mmap64(void* address, size_t size, int protection, int flags, int file,
                        off64_t offset) noexcept {
    static const auto call = real<void*(void*, size_t, int, int, int, off64_t)>("mmap64");
    return failsCall("mmap", CALLER) ? MAP_FAILED : call(address, size, protection, flags, file, offset);
}
