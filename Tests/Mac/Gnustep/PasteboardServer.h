#pragma once

#include <sys/types.h>

namespace tavel {

/// A GNUstep pasteboard server for this program alone. Clients find it through the temporary directory that
/// the program was started with. The server ends with this object, or with the thread that started it.
class PasteboardServer {
public:
    /// The environment variable with that directory. Programs read it only when they start.
    static constexpr const char* directoryVariable = "TEMP";

    /// The server that the tests of this program share.
    static PasteboardServer& ofTheTests();

    PasteboardServer() = default;
    ~PasteboardServer() { stop(); }
    PasteboardServer(const PasteboardServer&) = delete;
    PasteboardServer& operator=(const PasteboardServer&) = delete;

    /// Returns once this program is connected to the server.
    void start();

    /// Kills the server, without a warning to its clients, and waits for its end.
    void stop();

private:
    pid_t process_ = -1;
};

} // namespace tavel
