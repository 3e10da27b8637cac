#pragma once

#include "Platform/Platform.h"
#include "Support/Error.h"
#include "Support/FileUrl.h"
#include "Tests/Unit/Doubles/ManualEventLoop.h"
#include "Tests/Unit/Doubles/ScriptedPasteboard.h"
#include "Tests/Unit/Fixtures/ScratchDirectory.h"

#include <atomic>
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

/// A tap that the test permits or refuses, and through which it sends key events. The test fails if the tap
/// is used in a way that would stall a keyboard, or that the interface excludes.
class ScriptedKeyboardTap final : public KeyboardTap {
public:
    bool create(Handler newHandler) override;
    void remove() override;
    void setEnabled(bool on) override;
    bool canLosePermission() override { return losesPermission; }
    bool isPermitted() override;
    bool isKeyDown(std::int64_t keyCode) override { return keysDown.contains(keyCode); }
    void post(std::span<const KeyEvent> events) override;

    bool allowed = true;
    bool losesPermission = false; // `allowed` counts also while there is a tap
    int creations = 0;            // including refused ones
    int permissionChecks = 0;
    bool exists = false;
    Handler handler;           // of the last tap, also when that is removed
    std::vector<bool> enabled; // every argument of `setEnabled`, oldest first
    std::set<std::int64_t> keysDown;
    std::vector<KeyEvent> posted;

private:
    bool isAllowed() const { return allowed || !losesPermission; }

    bool handling_ = false;
};

/// A desktop that only the test changes.
class ScriptedFocusProbe final : public FocusProbe {
public:
    void follow(bool on) override { followed.push_back(on); }
    std::optional<RunningApplication> frontmostApplication() override;
    bool isTrusted() override { return trusted; }
    std::optional<std::string> focusedRole(std::int32_t processIdentifier) override;
    void activate(std::int32_t processIdentifier) override { activated.push_back(processIdentifier); }

    std::optional<RunningApplication> frontmost;
    bool trusted = true;
    std::optional<std::string> role; // of the focused element of the frontmost program
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

    bool converts = true;              // false: every conversion fails
    std::size_t extraEncodedBytes = 0; // added to each converted file
    std::optional<bool> alpha;
    std::set<std::string, std::less<>> unknownTypes; // types without an encoder
    std::vector<std::string> converted;
    std::vector<double> qualities; // of the conversions to JPEG

private:
    std::optional<Bytes> encode(std::string_view signature, const Bytes& file);
};

/// Bytes that begin with `signature` and that the scripted codec reads as a picture of that size. Conversion
/// makes them a `scriptedPicture` of the same size with `pngSignature` or `jpegSignature`.
std::string scriptedPicture(std::string_view signature, std::int64_t width, std::int64_t height);

inline constexpr std::string_view pngSignature = "\x89PNG\r\n\x1A\n";
inline constexpr std::string_view jpegSignature = "\xFF\xD8\xFF";

/// A panel window's state, for the test. It outlives the window.
struct PanelWindow {
    NamePanelTexts texts;
    NamePanelActions actions; // empty once the window is destroyed
    std::string entered;      // the field's text; the stem at first
    std::string hint;
    std::optional<ScreenPoint> origin;
    bool shown = false;
    bool destroyed = false;
    bool hasKeyboard = true;
    int keyboardDemands = 0;
    std::function<void()> onKeyboardDemanded; // runs in each demand
};

/// A window without a screen.
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
    bool hasKeyboard() override { return window_->hasKeyboard; }
    void demandKeyboard() override;
    std::string enteredText() override { return window_->entered; }
    void showHint(std::string_view hint) override { window_->hint = hint; }
    void hide() override { window_->shown = false; }

private:
    std::shared_ptr<PanelWindow> window_;
    ScreenSurroundings surroundings_;
};

/// An operating system that the test controls.
class TestPlatform : public Platform {
public:
    std::shared_ptr<Pasteboard> openPasteboard(const std::optional<std::string>& name) override;

    std::string describePasteboard(const std::optional<std::string>&) override { return "a pasteboard"; }

    bool servesContents() override { return false; }

    void handOverContents() override { ++handOvers; }

    EventLoop& eventLoop() override { return loop; }

    ImageCodec& imageCodec() override { return codec; }

    KeyboardTap& keyboardTap() override { return tap; }

    FocusProbe& focusProbe() override { return focus; }

    bool watchParent(std::int32_t processIdentifier, std::function<void()> lost) override {
        watchedParent = processIdentifier;
        onParentLost = std::move(lost);
        return tellsOfParent;
    }

    void expectEnd() override { ++expectedEnds; }

    bool canShowNamePanel() override { return showsWindows; }

    std::unique_ptr<NamePanelView> makeNamePanelView(const NamePanelTexts& texts,
                                                     NamePanelActions actions) override;

    /// Differs from the portable form, so that a test sees that the platform made the URL.
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
    std::optional<Error> pasteboardError; // if set, opening a pasteboard throws it
    int passingErrors = 0;                // how often it throws before it stops; 0: for ever
    std::vector<std::optional<std::string>> openedPasteboards;
    bool tellsOfParent = false;
    std::optional<std::int32_t> watchedParent;
    std::function<void()> onParentLost;
    std::atomic<int> expectedEnds = 0;
    bool showsWindows = true;
    ScreenSurroundings surroundings;                  // of every panel
    std::vector<std::shared_ptr<PanelWindow>> panels; // all ever made, oldest first
    std::string timestamp = "2025-03-07-142501";
    bool isAccessory = false;
    int handOvers = 0;
    std::vector<std::string> logged;
};

} // namespace tavel
