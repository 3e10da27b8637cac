#pragma once

#include "Linux/Base/GlibEventLoop.h"
#include "Linux/Base/LocalTimestamp.h"
#include "Linux/Base/ParentWatch.h"
#include "Linux/Images/ProcessImageCodec.h"
#include "Platform/Platform.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

namespace tavel {

/// The part that all Linux platforms share: everything but pasteboards, keyboard, focus and windows.
class LinuxPlatform : public Platform {
public:
    EventLoop& eventLoop() final { return eventLoop_; }
    bool watchParent(std::int32_t processIdentifier, std::function<void()> lost) final;
    void expectEnd() override {}
    ImageCodec& imageCodec() final { return imageCodec_; }
    std::string fileUrl(const std::string& path) final;
    std::string localTimestamp() final;
    std::filesystem::path temporaryDirectory() final;
    void becomeAccessory() final {} // a program without windows has no icon or menu on Linux
    void log(const std::string& message) final;

protected:
    LinuxPlatform();

private:
    GlibEventLoop eventLoop_;
    ParentWatch parentWatch_{eventLoop_};
    ProcessImageCodec imageCodec_;
    LocalTimestamp timestamp_;
};

} // namespace tavel
