#pragma once

#include "Platform/Platform.h"

#include <memory>

namespace tavel {

class ClipboardWorker;

/// Reads lines from `descriptor` until its end, and posts each command to the platform's event loop, which
/// passes it to the worker in order. Silently drops lines that are no commands. At the end of input it posts
/// the worker's stop, behind the commands. After this and after "quit" it tells the platform that the process
/// is about to end, so that the main thread gets there even if it waits for a display server that hangs.
/// Blocks; run it on a thread of its own. That thread may still be reading while the process ends, so
/// `platform` must never be destroyed.
///
/// If memory runs out, it waits until a decoded command can be posted: none is lost. A line that cannot be
/// held or decoded even after a second is dropped.
void readCommands(int descriptor, Platform& platform, const std::weak_ptr<ClipboardWorker>& worker);

} // namespace tavel
