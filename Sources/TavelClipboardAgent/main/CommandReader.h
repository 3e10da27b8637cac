#pragma once

#include "Platform/EventLoop.h"

#include <memory>

namespace tavel {

class ClipboardWorker;

/// Reads lines from `descriptor` until its end, and posts each command to `loop`, which passes it to the
/// worker in order. Silently drops lines that are no commands. At the end of input it posts the worker's
/// stop, behind the commands. Blocks; run it on a thread of its own. That thread may still be reading while
/// the process ends, so `loop` must never be destroyed.
///
/// If memory runs out, it waits until a decoded command can be posted: none is lost. A line that cannot be
/// held or decoded even after a second is dropped.
void readCommands(int descriptor, EventLoop& loop, const std::weak_ptr<ClipboardWorker>& worker);

} // namespace tavel
