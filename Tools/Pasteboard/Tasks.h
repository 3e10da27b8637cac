#pragma once

#include "Pasteboard/Invocation.h"
#include "Platform/EventLoop.h"
#include "Platform/Pasteboard.h"

namespace tavel {

/// Performs the task and writes its output to the descriptor `output`. Runs `loop`, the platform's, while it
/// waits for the program that owns the content. Throws Error on failure; the pasteboard is then unchanged,
/// unless the platform refused new content after clearing it.
void performTask(const PasteboardTask& task, EventLoop& loop, Pasteboard& pasteboard, int output);

} // namespace tavel
