#pragma once

#include "Linux/Base/System.h"
#include "Linux/Images/ImageExchange.h"
#include "Platform/ImageCodec.h"

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// The path of the program tavel-images, in the directory of our helper programs.
std::filesystem::path imageProgramPath();

/// How long a run of the program may take, from the call on. The largest picture takes two seconds; only a
/// file made to take long comes near the limit.
struct ImageTimeLimits {
    std::chrono::milliseconds conversion{20'000};

    /// Of a HEIF file, for which the main thread waits. It takes a few hundredths of a second.
    std::chrono::milliseconds measuring{2'000};
};

/// Reads the headers of pictures itself. All else is done by the program tavel-images (docs/pictures.md),
/// which is started for each call and ends with it. So no decoder ever runs in this process, and a picture
/// that makes a decoder crash, hang or do what it should not is one that cannot be read.
///
/// Any thread. Two programs run at a time, and a third call waits for one of them, within
/// its time: one is for the main thread and one for the export, which has one thread.
class ProcessImageCodec final : public ImageCodec {
public:
    /// If the program cannot be started, no picture can be converted. The reason is then logged once, on the
    /// thread of the first call that needed the program.
    explicit ProcessImageCodec(Log log, std::filesystem::path program = imageProgramPath(),
                               ImageTimeLimits limits = {});

    std::optional<ImageSize> measure(const Bytes& file) override;
    std::optional<std::string> typeIdentifier(const Bytes& file) override;
    std::optional<bool> hasAlpha(const Bytes& file) override;
    bool canEncode(std::string_view typeIdentifier) override;
    std::optional<Bytes> encodePng(const Bytes& file) override;
    std::optional<Bytes> encodeJpeg(const Bytes& file, double quality) override;

private:
    class Turn;

    struct Answer {
        ImageAnswer header;
        Bytes encoded;
    };

    std::optional<Answer> ask(ImageTask task, const Bytes& file, double quality = 0);
    std::optional<Answer> run(const ImageRequest& request, const Bytes& file,
                              std::chrono::steady_clock::time_point deadline);
    bool isProgramThere();
    void complain(const std::string& reason);

    Log log_;
    std::filesystem::path program_;
    ImageTimeLimits limits_;
    std::once_flag complained_;
    std::mutex mutex_;
    std::condition_variable freed_;
    int running_ = 0; // under mutex_
};

} // namespace tavel
