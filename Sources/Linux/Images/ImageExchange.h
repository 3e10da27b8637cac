#pragma once

#include "Platform/ImageCodec.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// What the agent and the program tavel-images agree on. The agent starts the program with the arguments of
/// an ImageRequest and with two memory files: the picture, which nobody can change any more, and the answer,
/// of answerFileSize bytes, which are zeros. The program writes an ImageAnswer to the start of the answer,
/// and what it encoded after that. It exits with 0 if there is an answer. Its descriptors 0 to 2 lead to the
/// null device.
inline constexpr int pictureDescriptor = 3;
inline constexpr int answerDescriptor = 4;

enum class ImageTask : std::uint8_t { measure, hasAlpha, encodePng, encodeJpeg };

struct ImageRequest {
    /// The process that started the program; without it the answer is of no use.
    std::int64_t agent = 0;

    ImageTask task = ImageTask::measure;

    /// The picture's format, recognised by the agent: what the program has to have at hand.
    std::string typeIdentifier;

    double quality = 0; // of a JPEG, from 0 to 1
};

/// The program's arguments, without its name.
std::vector<std::string> argumentsFor(const ImageRequest& request);

/// nullopt if these are not the arguments of a request.
std::optional<ImageRequest> readArguments(const std::vector<std::string>& arguments);

/// The start of the answer. Fields that the task does not need are 0.
struct ImageAnswer {
    std::array<char, 8> mark{};
    std::uint64_t task = 0;
    std::int64_t width = 0;     // measure
    std::int64_t height = 0;    // measure
    std::uint64_t hasAlpha = 0; // hasAlpha: 0 or 1
    std::uint64_t length = 0;   // encodePng, encodeJpeg: bytes after the answer
};

inline constexpr std::array<char, 8> answerMark{'T', 'a', 'v', 'e', 'l', 'p', 'i', 'c'};

/// Room for the largest file: 32 megapixels of four samples of 16 bits, which cannot be compressed.
inline constexpr std::size_t mostEncodedBytes = std::size_t{256} * 1024 * 1024;

inline constexpr std::size_t answerFileSize = sizeof(ImageAnswer) + mostEncodedBytes;

} // namespace tavel
