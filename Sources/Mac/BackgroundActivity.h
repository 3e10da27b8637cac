#pragma once

namespace tavel {

/// Asks the system to keep this process's timers at their pace for as long as it runs, although it has no
/// window: otherwise it would slow them down to seconds after a while (App Nap), and copies would be noticed
/// late. The computer may still go to sleep. Main thread; once is enough.
void keepPaceInBackground();

} // namespace tavel
