#pragma once

#include "Platform/Platform.h"
#include "Support/Error.h"
#include "Tests/Unit/Doubles/ManualEventLoop.h"
#include "Tests/Unit/Doubles/ScriptedPasteboard.h"
#include "Tests/Unit/Fixtures/ScratchDirectory.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// A tap that the test allows or forbids, and through which it types.
class ScriptedKeyboardTap final : public KeyboardTap {
public:
    bool create(Handler newHandler) override;

    void setEnabled(bool on) override { enabled.push_back(on); }

    bool isKeyDown(std::int64_t keyCode) override { return keyCode == keyDown; }

    void postPasteShortcut(std::int64_t userData) override { pastes.push_back(userData); }

    bool allowed = true;
    int creations = 0; // the attempts, refused ones included
    Handler handler;
    std::vector<bool> enabled; // every answer of `setEnabled`, oldest first
    std::optional<std::int64_t> keyDown;
    std::vector<std::int64_t> pastes;
};

/// A desktop that stands still unless the test changes it.
class ScriptedFocusProbe final : public FocusProbe {
public:
    std::optional<std::int32_t> frontmostFileManager() override { return fileManager; }

    bool isFocusInFileView(std::int32_t processIdentifier) override {
        return fileView && processIdentifier == fileManager;
    }

    bool isSelfFrontmost() override { return selfFrontmost; }

    void activate(std::int32_t processIdentifier) override { activated.push_back(processIdentifier); }

    std::optional<std::int32_t> fileManager;
    bool fileView = false;
    bool selfFrontmost = false;
    std::vector<std::int32_t> activated;
};

/// Reads pictures of the form that `scriptedPicture` makes.
class ScriptedImageCodec final : public ImageCodec {
public:
    std::optional<ImageSize> measure(const Bytes& file) override;
    std::optional<std::string> typeIdentifier(const Bytes& file) override;
    std::optional<Bytes> encodePng(const Bytes& file) override;
    std::optional<Bytes> encodeJpeg(const Bytes&, double) override { return std::nullopt; }

    bool converts = true;          // or refuses every conversion
    std::size_t extraPngBytes = 0; // how much larger a PNG is made
    std::vector<std::string> converted;
};

/// Bytes that begin with `signature` and that the scripted codec takes for a picture of that size. Converted
/// to PNG they are `scriptedPicture(pngSignature, width, height)`.
std::string scriptedPicture(std::string_view signature, std::int64_t width, std::int64_t height);

inline constexpr std::string_view pngSignature = "\x89PNG\r\n\x1A\n";

/// A panel's window on a machine that shows none.
class HiddenNamePanelView final : public NamePanelView {
public:
    bool show(std::string_view, std::string_view, Actions) override { return false; }

    std::string enteredText() override { return {}; }

    void showHint(std::string_view) override {}

    void hide() override {}
};

/// An operating system in the test's hand.
class TestPlatform final : public Platform {
public:
    std::shared_ptr<Pasteboard> openPasteboard(const std::optional<std::string>& name) override;

    bool servesContents() override { return false; }

    void handOverContents() override { ++handOvers; }

    EventLoop& eventLoop() override { return loop; }

    ImageCodec& imageCodec() override { return codec; }

    KeyboardTap& keyboardTap() override { return tap; }

    FocusProbe& focusProbe() override { return focus; }

    std::unique_ptr<NamePanelView> makeNamePanelView() override {
        return std::make_unique<HiddenNamePanelView>();
    }

    std::filesystem::path temporaryDirectory() override { return temporary; }

    void becomeAccessory() override { isAccessory = true; }

    void log(const std::string& message) override { logged.push_back(message); }

    ScratchDirectory scratch;
    std::filesystem::path temporary = scratch.path();
    std::shared_ptr<ScriptedPasteboard> pasteboard = std::make_shared<ScriptedPasteboard>();
    ManualEventLoop loop;
    ScriptedImageCodec codec;
    ScriptedKeyboardTap tap;
    ScriptedFocusProbe focus;
    std::optional<Error> pasteboardError; // thrown instead of opening a pasteboard
    std::vector<std::optional<std::string>> openedPasteboards;
    bool isAccessory = false;
    int handOvers = 0;
    std::vector<std::string> logged;
};

} // namespace tavel
