#pragma once

#include "Mac/MacNamePanelView.h"
#include "Platform/NoFocusProbe.h"
#include "Platform/Platform.h"
#include "Tests/Unit/Doubles/ManualEventLoop.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace tavel {

/// A platform that provides only what a panel needs. Everything else throws. The test moves the event loop's
/// clock.
class PanelPlatform final : public Platform {
public:
    ManualEventLoop loop;

    bool canShowNamePanel() override { return true; }
    std::unique_ptr<NamePanelView> makeNamePanelView(const NamePanelTexts& texts,
                                                     NamePanelActions actions) override {
        return makeMacNamePanelView(texts, actions);
    }

    bool watchParent(std::int32_t, std::function<void()>) override { refuse(); }
    void expectEnd() override { refuse(); }
    std::shared_ptr<Pasteboard> openPasteboard(const std::optional<std::string>&) override { refuse(); }
    std::string describePasteboard(const std::optional<std::string>&) override { refuse(); }
    bool servesContents() override { refuse(); }
    void handOverContents() override { refuse(); }
    EventLoop& eventLoop() override { return loop; }
    ImageCodec& imageCodec() override { refuse(); }
    KeyboardTap& keyboardTap() override { refuse(); }
    FocusProbe& focusProbe() override { return focusProbe_; }
    std::string fileUrl(const std::string&) override { refuse(); }
    std::string localTimestamp() override { refuse(); }
    std::filesystem::path temporaryDirectory() override { refuse(); }
    void becomeAccessory() override { refuse(); }
    void log(const std::string&) override { refuse(); }

private:
    NoFocusProbe focusProbe_;

    [[noreturn]] static void refuse() { throw std::logic_error("A panel does not need this."); }
};

} // namespace tavel
