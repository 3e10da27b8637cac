#pragma once

#include <glib.h>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace tavel {

/// Lets any thread have a function called on GLib's default main context, a while later; once, however often
/// it was asked for in the meantime. Shared by those who ask, some of whom may still do so when it is over.
class MainLoopReminder : public std::enable_shared_from_this<MainLoopReminder> {
public:
    MainLoopReminder(std::chrono::milliseconds delay, std::function<void()> function)
        : delay_(delay), function_(std::move(function)) {}
    MainLoopReminder(const MainLoopReminder&) = delete;
    MainLoopReminder& operator=(const MainLoopReminder&) = delete;

    /// Any thread.
    void remind();

    /// The function will not be called any more. On the thread of the main context, outside of the function.
    void end();

private:
    static gboolean dispatch(gpointer data);

    const std::chrono::milliseconds delay_;
    std::function<void()> function_; // only used on the thread of the main context
    std::mutex mutex_;
    GSource* source_ = nullptr;                 // the one that is due
    std::shared_ptr<MainLoopReminder> dueSelf_; // which keeps this object until then
    bool ended_ = false;
};

} // namespace tavel
