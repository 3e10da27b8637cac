#pragma once

#include "Linux/Selections/DisplaySelections.h"
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

/// Acts as a separate program with pasteboards on a display server: it has its own connection, and its own
/// thread that serves its selections.
class PasteboardProgram {
public:
    /// The selections become the program's thread's.
    explicit PasteboardProgram(std::shared_ptr<DisplaySelections> selections);
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
    DisplaySelections& selections() { return *selections_; }

private:
    void serve();
    void wake() const;

    std::shared_ptr<DisplaySelections> selections_;
    int wakeUp_;
    std::mutex mutex_;
    std::condition_variable done_;
    std::queue<const std::function<void()>*> tasks_;
    std::size_t finished_ = 0;
    bool ending_ = false;
    std::thread thread_;
};

} // namespace tavel
