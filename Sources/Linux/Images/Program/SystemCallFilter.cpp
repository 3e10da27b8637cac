#include "Linux/Images/Program/SystemCallFilter.h"

#include <sched.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>

namespace tavel {
namespace {

constexpr std::array allowed{
    // Memory.
    SCMP_SYS(brk),
    SCMP_SYS(madvise),
    SCMP_SYS(mremap),
    SCMP_SYS(munmap),
    // Threads.
    SCMP_SYS(exit),
    SCMP_SYS(exit_group),
    SCMP_SYS(futex),
    SCMP_SYS(getcpu),
    SCMP_SYS(getpid),
    SCMP_SYS(gettid),
    SCMP_SYS(membarrier),
    SCMP_SYS(restart_syscall),
    SCMP_SYS(rseq),
    SCMP_SYS(sched_getaffinity),
    SCMP_SYS(sched_yield),
    SCMP_SYS(set_robust_list),
    // Signals, so that what aborts does not hang.
    SCMP_SYS(rt_sigaction),
    SCMP_SYS(rt_sigprocmask),
    SCMP_SYS(rt_sigreturn),
    SCMP_SYS(sigaltstack),
    // Clocks, where the C library cannot read them by itself, and waiting for them.
    SCMP_SYS(clock_getres),
    SCMP_SYS(clock_gettime),
    SCMP_SYS(clock_nanosleep),
    SCMP_SYS(gettimeofday),
    SCMP_SYS(nanosleep),
    // Random numbers; the size of the memory, by which qsort(3) chooses its method.
    SCMP_SYS(getrandom),
    SCMP_SYS(sysinfo),
    // Complaints of decoders. There is no descriptor that they could reach.
    SCMP_SYS(write),
    SCMP_SYS(writev),
#ifdef TAVEL_SANITIZED
    // A sanitizer finds out with a pipe to itself whether an address can be read.
    SCMP_SYS(close),
    SCMP_SYS(pipe2),
#endif
};

/// What the C library asks standard output about before it writes there for the first time.
constexpr std::array answeredWithNoDescriptor{SCMP_SYS(fstat), SCMP_SYS(newfstatat)};

using Filter = std::unique_ptr<void, decltype(&seccomp_release)>;

bool addConditions(void* filter) {
    const auto allowIf = [filter](int call, scmp_arg_cmp condition) {
        return seccomp_rule_add_array(filter, SCMP_ACT_ALLOW, call, 1, &condition) == 0;
    };
    const auto own = static_cast<scmp_datum_t>(getpid());
    // A thread, and no process. The flags of the other call, clone3, are in memory, where a filter cannot see
    // them; without it the C library takes this one.
    return allowIf(SCMP_SYS(clone), SCMP_A0_64(SCMP_CMP_MASKED_EQ, CLONE_THREAD, CLONE_THREAD)) &&
           seccomp_rule_add_array(filter, SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), 0, nullptr) == 0 &&
           // Memory, but no code.
           allowIf(SCMP_SYS(mmap), SCMP_A2_64(SCMP_CMP_MASKED_EQ, PROT_EXEC, 0)) &&
           allowIf(SCMP_SYS(mprotect), SCMP_A2_64(SCMP_CMP_MASKED_EQ, PROT_EXEC, 0)) &&
           // Signals to itself: abort(3).
           allowIf(SCMP_SYS(tgkill), SCMP_A0_64(SCMP_CMP_EQ, own)) &&
           // The name of a thread.
           allowIf(SCMP_SYS(prctl), SCMP_A0_64(SCMP_CMP_EQ, PR_SET_NAME));
}

bool addRules(void* filter) {
    for (const int call : allowed) {
        if (seccomp_rule_add_array(filter, SCMP_ACT_ALLOW, call, 0, nullptr) != 0)
            return false;
    }
    for (const int call : answeredWithNoDescriptor) {
        if (seccomp_rule_add_array(filter, SCMP_ACT_ERRNO(EBADF), call, 0, nullptr) != 0)
            return false;
    }
    return addConditions(filter);
}

} // namespace

void filterSystemCalls() {
    const Filter filter(seccomp_init(SCMP_ACT_KILL_PROCESS), seccomp_release);
    if (filter == nullptr)
        return;
    // Calls of the processor's other instruction sets, which have other numbers.
    seccomp_attr_set(filter.get(), SCMP_FLTATR_ACT_BADARCH, SCMP_ACT_KILL_PROCESS);
    seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_TSYNC, 1); // all threads
    if (addRules(filter.get()))
        seccomp_load(filter.get());
}

} // namespace tavel
