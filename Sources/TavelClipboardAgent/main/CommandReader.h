#pragma once

#include "Platform/EventLoop.h"

#include <memory>

namespace tavel {

class ClipboardWorker;

/// Reads commands from `descriptor` until its end, and passes each to the worker on the main thread in the
/// order of the lines; lines that are no commands are dropped without a trace. At the end it makes the worker
/// stop, after the commands that came before. Blocks: it is meant for a thread of its own, which may still be
/// reading when the process ends, so `loop` must never be destroyed.
void readCommands(int descriptor, EventLoop& loop, const std::weak_ptr<ClipboardWorker>& worker);

} // namespace tavel
