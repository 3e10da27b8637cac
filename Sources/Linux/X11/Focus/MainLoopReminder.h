#pragma once

#include <glib.h>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace tavel {

/// Calls a function on GLib's default main context a fixed delay after a request from any thread. Requests
/// during the delay lead to the same call. Shared by the requesting threads, which may still make requests
/// after `end`.
class MainLoopReminder : public std::enable_shared_from_this<MainLoopReminder> {
public:
    MainLoopReminder(std::chrono::milliseconds delay, std::function<void()> function)
        : delay_(delay), function_(std::move(function)) {}
    MainLoopReminder(const MainLoopReminder&) = delete;
    MainLoopReminder& operator=(const MainLoopReminder&) = delete;

    /// Any thread.
    void remind();

    /// Prevents any further call. To be called on the thread of the main context, outside of the function.
    void end();

private:
    static gboolean dispatch(gpointer data);

    const std::chrono::milliseconds delay_;
    std::function<void()> function_; // only used on the thread of the main context
    std::mutex mutex_;
    GSource* source_ = nullptr;                 // the pending call, null for none
    std::shared_ptr<MainLoopReminder> dueSelf_; // keeps this object alive until the call
    bool ended_ = false;
};

} // namespace tavel
