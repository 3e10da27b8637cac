#pragma once

#include <sys/types.h>

namespace tavel {

/// GNUstep's pasteboard server, for this program alone: it is found through the temporary directory that the
/// program was started with. The server ends with this object, or with the thread that started it.
class PasteboardServer {
public:
    /// The variable with that directory. Programs look at it only when they start.
    static constexpr const char* meetingPlace = "TEMP";

    /// The one for the tests of this program.
    static PasteboardServer& ofTheTests();

    PasteboardServer() = default;
    ~PasteboardServer() { stop(); }
    PasteboardServer(const PasteboardServer&) = delete;
    PasteboardServer& operator=(const PasteboardServer&) = delete;

    /// Returns when this program is connected to it.
    void start();

    /// Takes the server from its clients without a warning, and waits for its end.
    void stop();

private:
    pid_t process_ = -1;
};

} // namespace tavel
