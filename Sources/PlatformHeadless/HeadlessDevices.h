#pragma once

#include "Platform/FocusProbe.h"
#include "Platform/ImageCodec.h"
#include "Platform/KeyboardTap.h"
#include "Platform/NamePanelView.h"

namespace tavel {

/// What a machine without a display answers: there is no image codec, no keyboard, no program in front, no
/// window.

class NoImageCodec final : public ImageCodec {
public:
    std::optional<ImageSize> measure(const Bytes&) override { return std::nullopt; }
    std::optional<std::string> typeIdentifier(const Bytes&) override { return std::nullopt; }
    std::optional<Bytes> encodePng(const Bytes&) override { return std::nullopt; }
    std::optional<Bytes> encodeJpeg(const Bytes&, double) override { return std::nullopt; }
};

class RefusedKeyboardTap final : public KeyboardTap {
public:
    bool create(Handler) override { return false; }
    void setEnabled(bool) override {}
    bool isKeyDown(std::int64_t) override { return false; }
    void postPasteShortcut(std::int64_t) override {}
};

class NoFocusProbe final : public FocusProbe {
public:
    std::optional<std::int32_t> frontmostFileManager() override { return std::nullopt; }
    bool isFocusInFileView(std::int32_t) override { return false; }
    bool isSelfFrontmost() override { return false; }
    void activate(std::int32_t) override {}
};

class NoNamePanelView final : public NamePanelView {
public:
    bool show(std::string_view, std::string_view, Actions) override { return false; }
    std::string enteredText() override { return {}; }
    void showHint(std::string_view) override {}
    void hide() override {}
};

} // namespace tavel
