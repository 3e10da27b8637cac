#pragma once

#include "Platform/Platform.h"
#include "Support/Error.h"
#include "Support/FileUrl.h"
#include "Tests/Unit/Doubles/ManualEventLoop.h"
#include "Tests/Unit/Doubles/ScriptedPasteboard.h"
#include "Tests/Unit/Fixtures/ScratchDirectory.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {

/// A tap that the test allows or forbids, and through which it types.
class ScriptedKeyboardTap final : public KeyboardTap {
public:
    bool create(Handler newHandler) override;
    void setEnabled(bool on) override { enabled.push_back(on); }
    bool isKeyDown(std::int64_t keyCode) override { return keysDown.contains(keyCode); }
    void post(std::span<const KeyEvent> events) override;

    bool allowed = true;
    int creations = 0; // the attempts, refused ones included
    Handler handler;
    std::vector<bool> enabled; // every argument of `setEnabled`, oldest first
    std::set<std::int64_t> keysDown;
    std::vector<KeyEvent> posted;
};

/// A desktop that stands still unless the test changes it.
class ScriptedFocusProbe final : public FocusProbe {
public:
    void follow(bool on) override { followed.push_back(on); }
    std::optional<RunningApplication> frontmostApplication() override;
    bool isTrusted() override { return trusted; }
    std::optional<std::string> focusedRole(std::int32_t processIdentifier) override;
    void activate(std::int32_t processIdentifier) override { activated.push_back(processIdentifier); }

    std::optional<RunningApplication> frontmost;
    bool trusted = true;
    std::optional<std::string> role; // of the frontmost program's focused element
    std::function<void()> onAsked;   // runs before each answer of `frontmostApplication`
    std::vector<bool> followed;      // every argument of `follow`, oldest first
    std::vector<std::int32_t> askedForRole;
    std::vector<std::int32_t> activated;
};

/// Reads pictures of the form that `scriptedPicture` makes.
class ScriptedImageCodec final : public ImageCodec {
public:
    std::optional<ImageSize> measure(const Bytes& file) override;
    std::optional<std::string> typeIdentifier(const Bytes& file) override;
    std::optional<bool> hasAlpha(const Bytes&) override { return alpha; }
    bool canEncode(std::string_view typeIdentifier) override {
        return !unknownTypes.contains(typeIdentifier);
    }
    std::optional<Bytes> encodePng(const Bytes& file) override;
    std::optional<Bytes> encodeJpeg(const Bytes& file, double quality) override;

    bool converts = true;              // or refuses every conversion
    std::size_t extraEncodedBytes = 0; // how much larger a file is made
    std::optional<bool> alpha;
    std::set<std::string, std::less<>> unknownTypes; // for which there is no encoder
    std::vector<std::string> converted;
    std::vector<double> qualities; // of the conversions to JPEG

private:
    std::optional<Bytes> encode(std::string_view signature, const Bytes& file);
};

/// Bytes that begin with `signature` and that the scripted codec takes for a picture of that size. Converted
/// they are `scriptedPicture` of the same size, with `pngSignature` or `jpegSignature`.
std::string scriptedPicture(std::string_view signature, std::int64_t width, std::int64_t height);

inline constexpr std::string_view pngSignature = "\x89PNG\r\n\x1A\n";
inline constexpr std::string_view jpegSignature = "\xFF\xD8\xFF";

/// What a test sees of a panel's window. It outlives the window.
struct PanelWindow {
    NamePanelTexts texts;
    NamePanelActions actions; // gone with the window
    std::string entered;      // what the field holds; the stem at first
    std::string hint;
    std::optional<ScreenPoint> origin;
    bool shown = false;
    bool destroyed = false;
};

/// A window that nobody sees.
class ScriptedNamePanelView final : public NamePanelView {
public:
    ScriptedNamePanelView(std::shared_ptr<PanelWindow> window, ScreenSurroundings surroundings)
        : window_(std::move(window)), surroundings_(std::move(surroundings)) {}
    ~ScriptedNamePanelView() override {
        window_->destroyed = true;
        window_->actions = {};
    }
    ScriptedNamePanelView(const ScriptedNamePanelView&) = delete;
    ScriptedNamePanelView& operator=(const ScriptedNamePanelView&) = delete;

    ScreenSurroundings surroundings() override { return surroundings_; }
    void setOrigin(ScreenPoint origin) override { window_->origin = origin; }
    void show() override { window_->shown = true; }
    std::string enteredText() override { return window_->entered; }
    void showHint(std::string_view hint) override { window_->hint = hint; }
    void hide() override { window_->shown = false; }

private:
    std::shared_ptr<PanelWindow> window_;
    ScreenSurroundings surroundings_;
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

    std::unique_ptr<NamePanelView> makeNamePanelView(const NamePanelTexts& texts,
                                                     NamePanelActions actions) override;

    /// Not quite as the portable code would write it, so that a test sees who was asked.
    std::string fileUrl(const std::string& path) override { return fileUrlFromPath(path) + "#platform"; }

    std::string localTimestamp() override { return timestamp; }

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
    bool showsWindows = true;
    ScreenSurroundings surroundings;                  // of every panel
    std::vector<std::shared_ptr<PanelWindow>> panels; // all that were made, oldest first
    std::string timestamp = "2025-03-07-142501";
    bool isAccessory = false;
    int handOvers = 0;
    std::vector<std::string> logged;
};

} // namespace tavel
