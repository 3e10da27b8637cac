#pragma once

/// Stands in for the application's part of the event loop and for autorelease pools, behind the adaptors' own
/// headers of these.
namespace tavel::doubles {

/// The pool that was opened last on this thread and is not closed: each has a number of its own, from 1. Zero
/// outside all pools.
int currentPool();

/// How many pools are open on this thread.
int openPools();

/// How many events wait for a pass. Any thread.
int waitingEvents();

/// Forgets the events. Main thread.
void resetApplication();

} // namespace tavel::doubles
