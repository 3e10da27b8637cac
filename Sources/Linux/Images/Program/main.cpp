// tavel-images: converts one picture for the agent, and ends. See docs/pictures.md.

#include "Linux/Images/Program/Conversion.h"
#include "Linux/Images/Program/ImageProgram.h"
#include "Linux/Images/Program/ProcessLock.h"

#include <cstring>

namespace {

using namespace tavel;

/// The part of the answer that is not encoded bytes. nullopt if there is no answer.
std::optional<ImageAnswer> answerTo(const ImageRequest& request, const Bytes& picture, ImageOutput& output) {
    ImageAnswer answer{answerMark, static_cast<std::uint64_t>(request.task)};
    switch (request.task) {
    case ImageTask::measure: {
        const auto size = measureImage(picture);
        answer.width = size ? size->width : 0;
        answer.height = size ? size->height : 0;
        return size ? std::optional(answer) : std::nullopt;
    }
    case ImageTask::hasAlpha: {
        const auto hasAlpha = imageHasAlpha(picture);
        answer.hasAlpha = hasAlpha.value_or(false) ? 1 : 0;
        return hasAlpha ? std::optional(answer) : std::nullopt;
    }
    case ImageTask::encodePng:
        if (!convertToPng(picture, output))
            return std::nullopt;
        break;
    case ImageTask::encodeJpeg:
        if (!convertToJpeg(picture, request.quality, output))
            return std::nullopt;
        break;
    }
    answer.length = output.written().size();
    return answer;
}

bool convert(const ImageRequest& request, const Bytes& picture, std::span<char> answerFile) {
    ImageOutput output(answerFile.subspan(sizeof(ImageAnswer)));
    const auto answer = answerTo(request, picture, output);
    if (!answer)
        return false;
    std::memcpy(answerFile.data(), &*answer, sizeof *answer);
    return true;
}

} // namespace

int main(int count, char** arguments) {
    runImageProgram(count, arguments, lockProcess, convert);
}
