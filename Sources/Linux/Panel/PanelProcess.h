#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string_view>

namespace tavel {

/// A running panel program, as a child process that inherits three descriptors and nothing else. Ended with
/// this object, at once and whatever it is doing: it has nothing to save, and its window goes with it.
class PanelProcess {
public:
    /// Throws std::runtime_error with the reason if it cannot be started.
    explicit PanelProcess(const std::filesystem::path& program);

    /// Waits for nothing: a process that takes long to end is reaped by GLib's default main context.
    ~PanelProcess();
    PanelProcess(const PanelProcess&) = delete;
    PanelProcess& operator=(const PanelProcess&) = delete;

    /// Gives what the program writes to its standard output. Non-blocking, as the other one.
    int output() const { return channel_; }

    /// Gives what the program writes to its standard error.
    int errors() const { return errors_; }

    /// Writes to the program's standard input, without waiting. If that cannot be done in whole, the output
    /// ends.
    void send(std::string_view text) const;

private:
    void start(const std::filesystem::path& program, int childChannel, int childErrors);

    pid_t process_ = -1;
    int channel_ = -1; // a socket, for both directions
    int errors_ = -1;
};

} // namespace tavel
