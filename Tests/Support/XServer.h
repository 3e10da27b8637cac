#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>

namespace tavel {

/// An X server of a test's own, without a screen that anybody sees (Xvfb), on a display number that nobody
/// else has; tests may run at the same time. It ends with this object, or with the thread that made this
/// object, should that end first (so does the process with its main thread), and leaves no file.
///
/// Used by one thread.
class XServer {
public:
    static constexpr std::chrono::seconds deadline{30};

    /// Returns when the server takes connections. Throws std::runtime_error with the reason if it cannot.
    XServer();
    ~XServer() { stop(); }
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;

    /// For the variable DISPLAY, for instance ":12". The number is free for others once the server has ended.
    const std::string& display() const { return display_; }

    pid_t processIdentifier() const { return process_; }

    /// Takes the server from its clients without a warning, and waits for its end. Does nothing the second
    /// time.
    void stop();

private:
    void start(int numberPipe);
    void readDisplay(int numberPipe);
    void removeFile() const;

    pid_t process_ = -1; // -1 once it has been waited for
    std::string display_;
};

} // namespace tavel
