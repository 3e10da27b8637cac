#pragma once

#include "Linux/X11/Selections/X11Selections.h"
#include "Platform/Pasteboard.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <queue>
#include <string>
#include <thread>

namespace tavel {

/// A program with pasteboards on an X server, as far as the server and other programs can tell: it has a
/// connection of its own, and a thread of its own that serves what it owns.
class PasteboardProgram {
public:
    /// Throws std::runtime_error if there is no server.
    PasteboardProgram(const std::string& display, const TransferTimeOuts& timeOuts);
    ~PasteboardProgram();
    PasteboardProgram(const PasteboardProgram&) = delete;
    PasteboardProgram& operator=(const PasteboardProgram&) = delete;

    /// The program's pasteboard of that name. May be used on any thread: its operations run on the program's,
    /// and the caller waits. It must not be used when the program is gone.
    std::shared_ptr<Pasteboard> open(const std::optional<std::string>& name);

    /// Runs the task on the program's thread and waits for its end. Directly, if this is that thread.
    void run(const std::function<void()>& task);

    /// What the program's pasteboards use. Only within `run`.
    X11Selections& selections() { return *selections_; }

    /// Ends the program's connection while the program goes on to exist, as a crash would.
    void disconnect();

private:
    void serve();
    void wake() const;

    std::shared_ptr<X11Selections> selections_;
    int wakeUp_;
    std::mutex mutex_;
    std::condition_variable done_;
    std::queue<const std::function<void()>*> tasks_;
    std::size_t finished_ = 0;
    bool ending_ = false;
    std::thread thread_;
};

} // namespace tavel
