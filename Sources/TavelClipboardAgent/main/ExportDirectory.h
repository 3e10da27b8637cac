#pragma once

#include <filesystem>
#include <functional>
#include <mutex>

namespace tavel {

/// The agent's own directory (0700), which holds all files that it hands over. Any thread.
class ExportDirectory {
public:
    explicit ExportDirectory(std::filesystem::path path) : path_(std::move(path)) {}

    const std::filesystem::path& path() const { return path_; }

    /// Makes the directory and its missing parents. A failure is not reported; later writes into it fail.
    void create();

    /// Runs `write`, which writes into the directory. Returns false instead if `remove` was called before.
    /// Passes on what `write` throws.
    bool whileThere(const std::function<void()>& write);

    /// Removes the directory with everything in it, for good. Waits for a running write. No write begins
    /// afterwards, so that no background job makes the directory again.
    void remove();

private:
    std::filesystem::path path_;
    std::mutex mutex_;
    bool removed_ = false;
};

} // namespace tavel
