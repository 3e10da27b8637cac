#pragma once

#include "Pasteboard/Invocation.h"
#include "Platform/Pasteboard.h"

namespace tavel {

/// Performs the task and writes its output to the descriptor `output`. Throws Error on failure; the
/// pasteboard is then unchanged, unless the platform refused new content after clearing it.
void performTask(const PasteboardTask& task, Pasteboard& pasteboard, int output);

} // namespace tavel
