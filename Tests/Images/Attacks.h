#pragma once

#include "Linux/Images/Program/ImageProgram.h"

namespace tavel {

/// Does what the end of the "picture", after its last line feed, names: an attack and perhaps a number. An
/// attack that succeeds is answered with "has alpha", whatever was asked for; one that fails has no answer.
bool attack(const ImageRequest& request, const Bytes& picture, std::span<char> answerFile);

} // namespace tavel
