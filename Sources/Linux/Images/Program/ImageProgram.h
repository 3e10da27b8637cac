#pragma once

#include "Linux/Images/ImageExchange.h"
#include "Support/Bytes.h"

#include <span>

namespace tavel {

/// Does what was asked for with the picture, and writes the answer's file from its start. False if there is
/// no answer.
using ImageWork = bool (*)(const ImageRequest& request, const Bytes& picture, std::span<char> answerFile);

/// The life of tavel-images: takes the picture and the answer's file over from the agent, opens all that the
/// conversion needs, calls `lock`, and only then `work`, the first to look at the picture. Ends the process.
[[noreturn]] void runImageProgram(int count, char** arguments, void (*lock)(), ImageWork work);

} // namespace tavel
