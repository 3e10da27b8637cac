#pragma once

#include "Pasteboard/Invocation.h"
#include "Platform/Pasteboard.h"

namespace tavel {

/// Does what was asked for; what it has to give goes to the descriptor `output`. Throws Error when it cannot
/// be done; the pasteboard is then as it was before, except where the platform refused the new content.
void performTask(const PasteboardTask& task, Pasteboard& pasteboard, int output);

} // namespace tavel
