#pragma once

namespace tavel {

/// Takes from this process, for good, all that a conversion does not need: its descriptors, files, the
/// network, other processes, programs, code that was not there before, and more memory and time than the
/// largest picture takes. What the system does not offer is left out, and the rest holds; docs/pictures.md
/// says what holds where. No other thread may exist yet.
void lockProcess();

} // namespace tavel
