#pragma once

#include "Linux/Base/GlibEventLoop.h"
#include "Linux/Base/LocalTimestamp.h"
#include "Linux/Images/OnDemandImageCodec.h"
#include "Platform/Platform.h"

#include <filesystem>
#include <string>

namespace tavel {

/// What every platform of Linux has, whatever its pasteboards, keyboard and windows are.
class LinuxPlatform : public Platform {
public:
    EventLoop& eventLoop() final { return eventLoop_; }
    ImageCodec& imageCodec() final { return imageCodec_; }
    std::string fileUrl(const std::string& path) final;
    std::string localTimestamp() final;
    std::filesystem::path temporaryDirectory() final;
    void becomeAccessory() final {} // a program without a window has no icon and no menu here
    void log(const std::string& message) final;

protected:
    LinuxPlatform();

private:
    GlibEventLoop eventLoop_;
    OnDemandImageCodec imageCodec_;
    LocalTimestamp timestamp_;
};

} // namespace tavel
