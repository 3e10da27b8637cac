#pragma once

#include "Linux/Base/Descriptor.h"
#include "Linux/Images/ImageExchange.h"

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <optional>

namespace tavel {

/// One run of the program tavel-images. The thread that makes this object has to wait for the end too: the
/// program dies with the thread that started it, which is how it dies with this process in any case.
class ImageProcess {
public:
    using Clock = std::chrono::steady_clock;

    /// Throws std::runtime_error with the reason if the program cannot be started.
    ImageProcess(const std::filesystem::path& program, const ImageRequest& request, const Descriptor& picture,
                 const Descriptor& answer);

    /// Kills the process if it still runs. It is gone afterwards.
    ~ImageProcess();
    ImageProcess(const ImageProcess&) = delete;
    ImageProcess& operator=(const ImageProcess&) = delete;

    /// Waits for the end, and returns the exit status. nullopt if the process has not ended at the deadline,
    /// or a signal has ended it.
    std::optional<int> exitStatus(Clock::time_point deadline);

private:
    bool hasEndedAt(Clock::time_point deadline);
    bool reap();

    pid_t process_ = -1;
    bool isReaped_ = false;
    std::optional<int> status_; // as waitpid(2) gives it
};

} // namespace tavel
