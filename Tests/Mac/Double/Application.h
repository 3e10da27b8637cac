#pragma once

/// A double of the functions in Mac/Application.h that the C adaptors call: the application's events and the
/// autorelease pools.
namespace tavel::doubles {

/// The innermost open pool of this thread. Each pool has its own number, starting at 1; 0 means none.
int currentPool();

/// The number of open pools on this thread.
int openPools();

/// The number of events that no pass has taken yet. Any thread.
int waitingEvents();

/// Discards the events. Main thread.
void resetApplication();

} // namespace tavel::doubles
