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

/// Acts as a separate program with pasteboards on an X server: it has its own connection, and its own thread
/// that serves its selections.
class PasteboardProgram {
public:
    /// Throws std::runtime_error if there is no server.
    PasteboardProgram(const std::string& display, const TransferTimeOuts& timeOuts);
    ~PasteboardProgram();
    PasteboardProgram(const PasteboardProgram&) = delete;
    PasteboardProgram& operator=(const PasteboardProgram&) = delete;

    /// The program's pasteboard of that name. Usable on any thread: its operations run on the program's
    /// thread while the caller waits. Must not be used after the end of the program.
    std::shared_ptr<Pasteboard> open(const std::optional<std::string>& name);

    /// Runs the task on the program's thread and waits for its end. Directly, if this is that thread.
    void run(const std::function<void()>& task);

    /// Whether the caller runs on the program's thread.
    bool isCurrent() const { return std::this_thread::get_id() == thread_.get_id(); }

    /// The selections of the program's pasteboards. Only for use within `run`.
    X11Selections& selections() { return *selections_; }

    /// Ends the program's connection as a crash would, but keeps the program.
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
