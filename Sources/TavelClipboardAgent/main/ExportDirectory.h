#pragma once

#include <filesystem>
#include <functional>
#include <mutex>

namespace tavel {

/// The agent's own directory (0700), in which everything lies that it hands over as files. Any thread.
class ExportDirectory {
public:
    explicit ExportDirectory(std::filesystem::path path) : path_(std::move(path)) {}

    const std::filesystem::path& path() const { return path_; }

    /// Makes the directory, with what is missing above it. A failure shows when something is put in it.
    void create();

    /// Runs `write`, which puts something into the directory, unless the directory was removed for good.
    /// False if it was. What `write` throws passes through.
    bool whileThere(const std::function<void()>& write);

    /// Removes the directory with everything in it. Waits for a write that runs; none begins afterwards, so
    /// that no background job brings back what has been removed.
    void remove();

private:
    std::filesystem::path path_;
    std::mutex mutex_;
    bool removed_ = false;
};

} // namespace tavel
