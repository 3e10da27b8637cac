#include "Tests/Mac/Double/MainQueue.h"

#include "Tests/Mac/Double/CoreObjects.h"
#include "Tests/Mac/Double/MainLoop.h"

#include <dispatch/dispatch.h>

#include <limits>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

using namespace tavel::doubles;

namespace {

struct Work {
    void* context;
    dispatch_function_t function;
};

struct GlobalQueue : dispatch_queue_global_s {
    explicit GlobalQueue(std::intptr_t itsQuality) : quality(itsQuality) {}
    std::intptr_t quality;
};

dispatch_queue_main_s mainQueue;
GlobalQueue globalQueues[] = {GlobalQueue(0x21), GlobalQueue(0x19), GlobalQueue(0x15), GlobalQueue(0x11),
                              GlobalQueue(0x09)};

std::mutex lock;
std::vector<Work> posted;
std::multimap<Time, Work> delayed;
std::vector<std::pair<std::intptr_t, std::jthread>> globalWork;
bool isRunning = false; // main thread only

std::vector<Work> takeDue() {
    const std::lock_guard guard(lock);
    auto due = std::exchange(posted, {});
    const auto later = delayed.upper_bound(now());
    for (auto next = delayed.begin(); next != later; next = delayed.erase(next))
        due.push_back(next->second);
    return due;
}

} // namespace

namespace tavel::doubles {

void runMainQueue() {
    if (isRunning)
        return; // a serial queue: not even a function that waits for events lets the next one in
    isRunning = true;
    for (const Work& work : takeDue())
        work.function(work.context);
    isRunning = false;
}

std::optional<Time> nextDelayed() {
    const std::lock_guard guard(lock);
    return delayed.empty() ? std::nullopt : std::optional(delayed.begin()->first);
}

std::vector<std::intptr_t> finishGlobalWork() {
    std::vector<std::intptr_t> queues;
    for (auto& [queue, thread] : std::exchange(globalWork, {})) {
        thread.join();
        queues.push_back(queue);
    }
    return queues;
}

} // namespace tavel::doubles

dispatch_queue_main_t dispatch_get_main_queue() {
    return &mainQueue;
}

dispatch_queue_global_t dispatch_get_global_queue(intptr_t identifier, uintptr_t flags) {
    for (GlobalQueue& queue : globalQueues) {
        if (queue.quality == identifier && flags == 0)
            return &queue;
    }
    refuse("There is no such queue.");
}

/// A global queue is concurrent: each job gets a thread.
void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t work) {
    if (queue != &mainQueue) {
        const auto quality = static_cast<const GlobalQueue*>(queue)->quality;
        globalWork.emplace_back(quality, std::jthread([work, context] { work(context); }));
        return;
    }
    {
        const std::lock_guard guard(lock);
        posted.push_back({context, work});
    }
    wakeMainLoop();
}

void dispatch_after_f(dispatch_time_t when, dispatch_queue_t queue, void* context, dispatch_function_t work) {
    if (queue != &mainQueue)
        refuse("The double delays work on the main queue only.");
    {
        const std::lock_guard guard(lock);
        delayed.emplace(Time(static_cast<std::int64_t>(when)), Work{context, work});
    }
    wakeMainLoop();
}

dispatch_time_t dispatch_time(dispatch_time_t when, int64_t nanoseconds) {
    if (when != DISPATCH_TIME_NOW)
        refuse("The double makes times relative to now only.");
    return static_cast<dispatch_time_t>(now().count() + nanoseconds);
}
