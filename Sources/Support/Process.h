#pragma once

#include <cstdint>

namespace tavel {

/// The current parent's process identifier. The system gives an orphan another parent (POSIX getppid), so a
/// change means that the original parent has ended.
std::int32_t parentProcessIdentifier();

/// Sets this process's nice value to 10. On Linux each thread has its own nice value and passes it on to the
/// threads that it starts, so this must be called before any other thread starts.
void lowerSchedulingPriority();

/// Opens the null device on each closed descriptor from 0 to 2. Otherwise the next file that is opened, such
/// as the pasteboard store, would become standard input or output.
void reserveStandardDescriptors();

/// Sets the limit of core dumps (RLIMIT_CORE) to 0, for good, for this process and those that it starts: a
/// dump would hold what was copied. The process stays open to debuggers and /proc.
void disableCoreDumps();

/// The descriptors to and from the parent.
struct StandardPipes {
    int input;
    int output;
};

/// Takes standard input and output for this process's own code. Moves them to descriptors above 2, which a
/// program that this process starts does not inherit, and puts the null device on 0, 1 and 2, where libraries
/// may write: what GLib and libvips print is a matter of the environment. A descriptor that was closed leads
/// to the null device, too. One that cannot be moved, because the system has no descriptor left, stays where
/// it is. To be called once, before any other thread starts.
StandardPipes takeStandardPipes();

/// Lets no program that this process starts have more rights than it has itself. Does nothing on other
/// systems than Linux.
void refuseNewPrivileges();

/// Blocks SIGPIPE in this thread and in those that it starts from now on. A write to a socket whose other end
/// is gone (an X server, the panel) then fails with EPIPE; many libraries write without MSG_NOSIGNAL.
void blockBrokenPipeSignal();

/// Ends the process by SIGPIPE, whether the signal is blocked, ignored (GIO makes the whole process ignore
/// it) or neither. Any thread.
[[noreturn]] void endByBrokenPipeSignal();

} // namespace tavel
