#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string_view>

namespace tavel {

/// The panel program as a child process. It inherits three descriptors and no others. The destructor kills
/// the process at once: the process has nothing to save, and the X server removes its window. Main thread
/// only.
class PanelProcess {
public:
    /// Throws std::runtime_error with the reason if the program cannot be started, or its path is relative.
    explicit PanelProcess(const std::filesystem::path& program);

    /// Does not wait: if the process has not ended yet, GLib's default main context reaps it later.
    ~PanelProcess();
    PanelProcess(const PanelProcess&) = delete;
    PanelProcess& operator=(const PanelProcess&) = delete;

    /// Delivers the program's standard output. Both descriptors are non-blocking and remain this object's.
    int output() const { return channel_; }

    /// Delivers the program's standard error.
    int errors() const { return errors_; }

    /// Writes to the program's standard input without waiting. If not all of the text can be written, shuts
    /// the connection down, so that output() reaches its end.
    void send(std::string_view text) const;

private:
    void start(const std::filesystem::path& program, int childChannel, int childErrors);

    pid_t process_ = -1;
    int channel_ = -1; // our end of a socket that is the program's standard input and output
    int errors_ = -1;
};

} // namespace tavel
