#pragma once

#include <glib.h>
#include <sys/types.h>

#include <chrono>
#include <functional>

namespace tavel {

/// Calls a function at each event, as long as the object exists; the function may replace or destroy the
/// object. Calls come from GLib's default main context. The function must not throw.
class Watch {
public:
    using Action = std::function<void()>;

    /// Watches nothing.
    Watch() = default;
    ~Watch();
    Watch(Watch&& other) noexcept;
    Watch& operator=(Watch&& other) noexcept;

    /// The descriptor is readable or at its end.
    static Watch readable(int descriptor, Action action);
    /// The descriptor is writable or has no reader any more.
    static Watch writable(int descriptor, Action action);
    /// The process received the signal, one of those that GLib can watch.
    static Watch signal(int number, Action action);
    /// Called once, after the delay.
    static Watch after(std::chrono::milliseconds delay, Action action);
    /// The child process ended; the action gets the status of waitpid.
    static Watch processEnd(pid_t process, std::function<void(int)> action);

    explicit operator bool() const { return source_ != nullptr; }

private:
    explicit Watch(GSource* source) : source_(source) {}

    GSource* source_ = nullptr;
};

/// Runs the main context until `done` returns true or the time-out passes. Returns the last result of `done`.
bool runUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout);

} // namespace tavel
