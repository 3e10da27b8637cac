#pragma once

namespace tavel {

/// Takes all rights to the file system from this thread and those that it starts, and as many others as the
/// kernel's Landlock knows: to TCP ports, to abstract sockets and to signal other processes. Does nothing on
/// a kernel without Landlock. The process must have given up new privileges.
void forbidFilesAndNetwork();

} // namespace tavel
