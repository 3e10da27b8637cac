#include "Tests/Unit/Doubles/TestPlatform.h"

#include "Support/ScopeExit.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <utility>

namespace tavel {

namespace {

constexpr std::string_view sizeMark = "|size ";

} // namespace

std::optional<ImageSize> ScriptedImageCodec::measure(const Bytes& file) {
    const std::size_t mark = file.view().find(sizeMark);
    if (mark == std::string_view::npos)
        return std::nullopt;
    const std::string text(file.view().substr(mark + sizeMark.size(), 50));
    long long width = 0;
    long long height = 0;
    if (std::sscanf(text.c_str(), "%lldx%lld", &width, &height) != 2)
        return std::nullopt;
    return ImageSize{width, height};
}

std::optional<std::string> ScriptedImageCodec::typeIdentifier(const Bytes& file) {
    return file.view().starts_with(pngSignature) ? "public.png" : "public.jpeg";
}

std::optional<Bytes> ScriptedImageCodec::encodePng(const Bytes& file) {
    return encode(pngSignature, file);
}

std::optional<Bytes> ScriptedImageCodec::encodeJpeg(const Bytes& file, double quality) {
    qualities.push_back(quality);
    return encode(jpegSignature, file);
}

std::optional<Bytes> ScriptedImageCodec::encode(std::string_view signature, const Bytes& file) {
    converted.emplace_back(file.view().substr(0, 64));
    const auto size = measure(file);
    if (!converts || !size)
        return std::nullopt;
    return Bytes::adopt(scriptedPicture(signature, size->width, size->height) +
                        std::string(extraEncodedBytes, '.'));
}

std::string scriptedPicture(std::string_view signature, std::int64_t width, std::int64_t height) {
    return std::string(signature) + std::string(sizeMark) + std::to_string(width) + "x" +
           std::to_string(height) + "|";
}

bool ScriptedKeyboardTap::create(Handler newHandler) {
    EXPECT_FALSE(exists) << "there is a tap already";
    EXPECT_FALSE(handling_) << "the tap's handler makes a tap";
    ++creations;
    exists = allowed;
    if (!allowed)
        return false;
    handler = [this, decide = std::move(newHandler)](const KeyEvent& event) {
        handling_ = true;
        const ScopeExit end([this] { handling_ = false; });
        return decide(event);
    };
    return true;
}

void ScriptedKeyboardTap::remove() {
    EXPECT_FALSE(handling_) << "the tap's handler removes the tap";
    exists = false;
}

void ScriptedKeyboardTap::setEnabled(bool on) {
    EXPECT_FALSE(on && !isAllowed()) << "the keyboard is stalled: a tap is enabled without permission";
    enabled.push_back(on);
}

bool ScriptedKeyboardTap::isPermitted() {
    ++permissionChecks;
    return isAllowed();
}

void ScriptedKeyboardTap::post(std::span<const KeyEvent> events) {
    posted.insert(posted.end(), events.begin(), events.end());
}

std::optional<RunningApplication> ScriptedFocusProbe::frontmostApplication() {
    if (onAsked)
        onAsked();
    return frontmost;
}

std::optional<std::string> ScriptedFocusProbe::focusedRole(std::int32_t processIdentifier) {
    askedForRole.push_back(processIdentifier);
    return frontmost && frontmost->processIdentifier == processIdentifier ? role : std::nullopt;
}

void ScriptedNamePanelView::demandKeyboard() {
    ++window_->keyboardDemands;
    if (window_->onKeyboardDemanded)
        window_->onKeyboardDemanded();
}

std::unique_ptr<NamePanelView> TestPlatform::makeNamePanelView(const NamePanelTexts& texts,
                                                               NamePanelActions actions) {
    if (!showsWindows)
        return nullptr;
    panels.push_back(std::make_shared<PanelWindow>());
    panels.back()->texts = texts;
    panels.back()->actions = std::move(actions);
    panels.back()->entered = texts.stem;
    return std::make_unique<ScriptedNamePanelView>(panels.back(), surroundings);
}

std::shared_ptr<Pasteboard> TestPlatform::openPasteboard(const std::optional<std::string>& name) {
    if (pasteboardError) {
        const Error error = *pasteboardError;
        if (passingErrors > 0 && --passingErrors == 0)
            pasteboardError.reset();
        throw Error(error);
    }
    openedPasteboards.push_back(name);
    return pasteboard;
}

} // namespace tavel
