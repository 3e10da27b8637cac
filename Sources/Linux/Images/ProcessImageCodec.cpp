#include "Linux/Images/ProcessImageCodec.h"

#include "ImageHeaders/ImageHeader.h"
#include "Linux/Base/Modules.h"
#include "Linux/Images/HeifBrand.h"
#include "Linux/Images/ImageProcess.h"
#include "Linux/Images/MemoryFile.h"

#include <unistd.h>

#include <cstring>
#include <system_error>
#include <utility>

namespace tavel {
namespace {

constexpr int atATime = 2;

/// With this the dynamic linker ends a program whose libraries are missing. The program itself has no such
/// exit status.
constexpr int cannotBeLinked = 127;

/// Whether the program may have said that: it may be in the hands of whoever made the picture.
bool isPlausible(const ImageAnswer& answer, ImageTask task) {
    if (answer.mark != answerMark || answer.task != static_cast<std::uint64_t>(task))
        return false;
    switch (task) {
    case ImageTask::measure:
        return answer.width >= 1 && answer.height >= 1;
    case ImageTask::hasAlpha:
        return answer.hasAlpha <= 1;
    case ImageTask::encodePng:
    case ImageTask::encodeJpeg:
        return answer.length >= 1;
    }
    return false;
}

/// nullopt if the file does not hold as many bytes.
std::optional<std::size_t> lengthOfAnswer(const Descriptor& file) {
    ImageAnswer answer;
    if (pread(file.number(), &answer, sizeof answer, 0) != sizeof answer || answer.length > mostEncodedBytes)
        return std::nullopt;
    return static_cast<std::size_t>(answer.length);
}

std::optional<std::string_view> typeOf(const Bytes& file) {
    if (const auto header = readImageHeader(file.view()))
        return header->typeIdentifier;
    return heifTypeIdentifier(file.view());
}

} // namespace

std::filesystem::path imageProgramPath() {
    return moduleDirectory() / "tavel-images";
}

/// The right to run the program.
class ProcessImageCodec::Turn {
public:
    Turn(ProcessImageCodec& codec, std::chrono::steady_clock::time_point deadline) : codec_(codec) {
        std::unique_lock lock(codec_.mutex_);
        has_ = codec_.freed_.wait_until(lock, deadline, [this] { return codec_.running_ < atATime; });
        if (has_)
            ++codec_.running_;
    }
    ~Turn() {
        if (!has_)
            return;
        const std::lock_guard lock(codec_.mutex_);
        --codec_.running_;
        codec_.freed_.notify_one();
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    explicit operator bool() const { return has_; }

private:
    ProcessImageCodec& codec_;
    bool has_ = false;
};

ProcessImageCodec::ProcessImageCodec(Log log, std::filesystem::path program, ImageTimeLimits limits)
    : log_(std::move(log)), program_(std::move(program)), limits_(limits) {}

std::optional<ImageSize> ProcessImageCodec::measure(const Bytes& file) {
    if (const auto header = readImageHeader(file.view()))
        return ImageSize{header->width, header->height};
    const auto answer = ask(ImageTask::measure, file);
    return answer ? std::optional(ImageSize{answer->header.width, answer->header.height}) : std::nullopt;
}

std::optional<std::string> ProcessImageCodec::typeIdentifier(const Bytes& file) {
    const auto type = typeOf(file);
    return type && measure(file) ? std::optional<std::string>(*type) : std::nullopt;
}

std::optional<bool> ProcessImageCodec::hasAlpha(const Bytes& file) {
    const auto answer = ask(ImageTask::hasAlpha, file);
    return answer ? std::optional(answer->header.hasAlpha == 1) : std::nullopt;
}

bool ProcessImageCodec::canEncode(std::string_view typeIdentifier) {
    return (typeIdentifier == "public.png" || typeIdentifier == "public.jpeg") && isProgramThere();
}

std::optional<Bytes> ProcessImageCodec::encodePng(const Bytes& file) {
    auto answer = ask(ImageTask::encodePng, file);
    return answer ? std::optional(std::move(answer->encoded)) : std::nullopt;
}

std::optional<Bytes> ProcessImageCodec::encodeJpeg(const Bytes& file, double quality) {
    auto answer = ask(ImageTask::encodeJpeg, file, quality);
    return answer ? std::optional(std::move(answer->encoded)) : std::nullopt;
}

std::optional<ProcessImageCodec::Answer> ProcessImageCodec::ask(ImageTask task, const Bytes& file,
                                                                double quality) {
    const auto type = typeOf(file);
    if (!type)
        return std::nullopt;
    const auto limit = task == ImageTask::measure ? limits_.measuring : limits_.conversion;
    const auto deadline = std::chrono::steady_clock::now() + limit;
    try {
        const Turn turn(*this, deadline);
        if (turn && isProgramThere())
            return run({getpid(), task, std::string(*type), quality}, file, deadline);
    } catch (const std::system_error& error) {
        if (error.code() == std::errc::executable_format_error)
            complain(error.what());
    } catch (const std::exception&) {
        return std::nullopt; // no memory is left for it now
    }
    return std::nullopt;
}

std::optional<ProcessImageCodec::Answer>
ProcessImageCodec::run(const ImageRequest& request, const Bytes& file,
                       std::chrono::steady_clock::time_point deadline) {
    const Descriptor answerFile = zeros(answerFileSize);
    std::optional<int> status;
    {
        const Descriptor picture = sealedCopy(file.view());
        ImageProcess process(program_, request, picture, answerFile);
        status = process.exitStatus(deadline);
    }
    if (status == cannotBeLinked)
        complain(program_.string() + ": its libraries cannot be loaded");
    if (status != 0)
        return std::nullopt;
    const auto length = lengthOfAnswer(answerFile);
    if (!length)
        return std::nullopt;
    const Bytes whole = takeStart(answerFile, sizeof(ImageAnswer) + *length);
    // Read again, because nobody can change it any more.
    ImageAnswer answer;
    std::memcpy(&answer, whole.data(), sizeof answer);
    if (!isPlausible(answer, request.task) || answer.length != *length)
        return std::nullopt;
    return Answer{answer, whole.slice(sizeof answer, *length)};
}

bool ProcessImageCodec::isProgramThere() {
    if (program_.is_absolute() && access(program_.c_str(), X_OK) == 0)
        return true;
    complain(program_.string() + ": no such program");
    return false;
}

void ProcessImageCodec::complain(const std::string& reason) {
    std::call_once(complained_, [&] { log_("Images cannot be converted: " + reason); });
}

} // namespace tavel
