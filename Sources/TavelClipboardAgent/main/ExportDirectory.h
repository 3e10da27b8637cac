#pragma once

#include "Support/PrivateDirectory.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <shared_mutex>

namespace tavel {

/// The agent's own directory (0700), which holds all files that it hands over. While it is open, this process
/// holds its lock, so that other agents see that it is in use. Any thread.
class ExportDirectory {
public:
    /// What to do if the directory does not exist.
    enum class Missing { make, fail };

    explicit ExportDirectory(std::filesystem::path path) : path_(std::move(path)) {}

    /// Where the directory is, or will be. `directory` may choose another name next to it.
    std::filesystem::path path() const;

    /// Makes the directory and its missing parents. A failure is not reported; later writes into it fail.
    void create();

    /// The directory, open. If its path leads to a link or to another user's directory by now, this makes a
    /// new one under another name. Throws FileError.
    std::shared_ptr<const PrivateDirectory> directory(Missing missing);

    /// Runs `write`, which writes into the directory. Returns false instead if `remove` was called before.
    /// Passes on what `write` throws.
    bool whileThere(const std::function<void()>& write);

    /// Removes the directory with everything in it, for good. Waits for a running write. No write begins
    /// afterwards, so that no background job makes the directory again.
    void remove();

private:
    void open(Missing missing);

    mutable std::mutex mutex_; // guards the path and the directory; held only for moments
    std::filesystem::path path_;
    std::shared_ptr<PrivateDirectory> directory_; // null until it is opened
    std::shared_mutex removal_;                   // shared by those who write
    bool removed_ = false;
};

} // namespace tavel
