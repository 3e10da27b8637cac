#pragma once

#include "Platform/KeyboardTap.h"
#include "Platform/Pasteboard.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>

namespace tavel {

/// Pasting into the file manager: when it is on, the paste shortcut asks for a file name. Main thread only.
class FilePaste {
public:
    /// `root` is where generated files go. `changed` is told the change count that publishing one gave the
    /// pasteboard. `tap` must outlive this object. Nothing is tapped yet.
    FilePaste(KeyboardTap& tap, std::shared_ptr<Pasteboard> board, std::filesystem::path root,
              std::function<void(std::int64_t)> changed);

    /// Switches the feature on or off. Throws Error ("Tavel", 1), described for the user, when the system
    /// does not let the agent see the keyboard; the feature is then off. Switching off never fails.
    void configure(bool enabled);

private:
    KeyboardTap& tap_;
    std::shared_ptr<Pasteboard> board_;
    std::filesystem::path root_;
    std::function<void(std::int64_t)> changed_;
    bool enabled_ = false;
    bool tapCreated_ = false;
};

} // namespace tavel
