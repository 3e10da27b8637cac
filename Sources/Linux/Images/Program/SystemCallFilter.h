#pragma once

namespace tavel {

/// Lets all threads of this process make only the system calls that a conversion needs. Any other one kills
/// the process. The calls that remain concern the process's own memory, threads and clocks. Does nothing on a
/// kernel without such filters.
void filterSystemCalls();

} // namespace tavel
