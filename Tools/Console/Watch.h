#pragma once

#include <glib.h>
#include <sys/types.h>

#include <chrono>
#include <functional>

namespace tavel {

/// Calls a function of ours whenever something happens, for as long as the object exists; it may be replaced
/// or destroyed in the very call. The calls come while GLib's default main context runs. The functions must
/// not throw.
class Watch {
public:
    using Action = std::function<void()>;

    /// Watches nothing.
    Watch() = default;
    ~Watch();
    Watch(Watch&& other) noexcept;
    Watch& operator=(Watch&& other) noexcept;

    /// The descriptor has something to read, or is at its end.
    static Watch readable(int descriptor, Action action);
    /// The descriptor takes something to write, or nobody reads it any more.
    static Watch writable(int descriptor, Action action);
    /// One of the signals that GLib can watch came.
    static Watch signal(int number, Action action);
    /// The time is over, once.
    static Watch after(std::chrono::milliseconds delay, Action action);
    /// The child process ended, with this status of waitpid.
    static Watch processEnd(pid_t process, std::function<void(int)> action);

    explicit operator bool() const { return source_ != nullptr; }

private:
    explicit Watch(GSource* source) : source_(source) {}

    GSource* source_ = nullptr;
};

/// Runs the main context until `done` says so or the time is over. Gives the last answer of `done`.
bool runUntil(const std::function<bool()>& done, std::chrono::milliseconds longest);

} // namespace tavel
