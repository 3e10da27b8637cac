#pragma once

#include "Platform/ImageCodec.h"

#include <functional>
#include <memory>
#include <string>

namespace tavel {

/// The image codec of a machine without a display. `log` is called on any thread.
std::unique_ptr<ImageCodec> makeHeadlessImageCodec(std::function<void(const std::string& message)> log);

} // namespace tavel
