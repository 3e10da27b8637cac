#include "Tests/Unit/Doubles/TestPlatform.h"

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
    converted.emplace_back(file.view().substr(0, 64));
    const auto size = measure(file);
    if (!converts || !size)
        return std::nullopt;
    return Bytes::adopt(scriptedPicture(pngSignature, size->width, size->height) +
                        std::string(extraPngBytes, '.'));
}

std::string scriptedPicture(std::string_view signature, std::int64_t width, std::int64_t height) {
    return std::string(signature) + std::string(sizeMark) + std::to_string(width) + "x" +
           std::to_string(height) + "|";
}

bool ScriptedKeyboardTap::create(Handler newHandler) {
    ++creations;
    if (allowed)
        handler = std::move(newHandler);
    return allowed;
}

std::shared_ptr<Pasteboard> TestPlatform::openPasteboard(const std::optional<std::string>& name) {
    if (pasteboardError)
        throw Error(*pasteboardError);
    openedPasteboards.push_back(name);
    return pasteboard;
}

} // namespace tavel
