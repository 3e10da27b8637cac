#pragma once

#include "Platform/EventLoop.h"

#include <functional>
#include <memory>

namespace tavel {

/// Says when to poll where the platform tells of new contents by itself: at once after a quiet time, and
/// never within 0.1 s after an announcement; news of that time wait for its end. So a burst of copies gives
/// at most ten announcements a second, and its last content is always reported. Without news no timer runs.
/// Main thread only. Held by a shared_ptr; timers hold it weakly.
class PollSchedule : public std::enable_shared_from_this<PollSchedule> {
public:
    /// `poll` must not throw. `loop` must outlive this object.
    PollSchedule(EventLoop& loop, std::function<void()> poll) : loop_(loop), poll_(std::move(poll)) {}

    /// There may be a new content.
    void noteNews();

    /// A content was announced.
    void noteAnnouncement() { wait(); }

    /// What cannot be reported now is to be tried again in 0.1 s, if no poll comes before.
    void retryLater();

    /// False if there was no memory for a timer. The caller then waits 0.1 s itself, and calls
    /// `goOnWithoutTimer`, which otherwise does nothing.
    bool hasTimerIfNeeded() const { return waiting_ != Waiting::withoutTimer; }
    void goOnWithoutTimer();

private:
    enum class Waiting { no, withTimer, withoutTimer };

    void wait();
    void endWait();

    EventLoop& loop_;
    std::function<void()> poll_;
    Waiting waiting_ = Waiting::no;
    bool isWanted_ = false; // a poll, at the end of the wait
};

} // namespace tavel
