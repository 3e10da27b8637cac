#include "PlatformHeadless/HeadlessImageCodec.h"

#include "PlatformImages/OnDemandImageCodec.h"

#include <utility>

namespace tavel {

std::unique_ptr<ImageCodec> makeHeadlessImageCodec(std::function<void(const std::string& message)> log) {
    return std::make_unique<OnDemandImageCodec>(std::move(log));
}

} // namespace tavel
