#pragma once

#include "Mac/MacNamePanelView.h"
#include "Platform/Platform.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace tavel {

/// A platform that provides only the panel's window. Everything else throws.
class PanelPlatform final : public Platform {
public:
    std::unique_ptr<NamePanelView> makeNamePanelView(const NamePanelTexts& texts,
                                                     NamePanelActions actions) override {
        return makeMacNamePanelView(texts, actions);
    }

    std::shared_ptr<Pasteboard> openPasteboard(const std::optional<std::string>&) override { refuse(); }
    bool servesContents() override { refuse(); }
    void handOverContents() override { refuse(); }
    EventLoop& eventLoop() override { refuse(); }
    ImageCodec& imageCodec() override { refuse(); }
    KeyboardTap& keyboardTap() override { refuse(); }
    FocusProbe& focusProbe() override { refuse(); }
    std::string fileUrl(const std::string&) override { refuse(); }
    std::string localTimestamp() override { refuse(); }
    std::filesystem::path temporaryDirectory() override { refuse(); }
    void becomeAccessory() override { refuse(); }
    void log(const std::string&) override { refuse(); }

private:
    [[noreturn]] static void refuse() { throw std::logic_error("A panel needs no more than its window."); }
};

} // namespace tavel
