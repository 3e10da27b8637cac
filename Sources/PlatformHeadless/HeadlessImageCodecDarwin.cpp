#include "PlatformHeadless/HeadlessImageCodec.h"

namespace tavel {
namespace {

/// The image libraries of the other systems are not asked for here: this system has its own.
class NoImageCodec final : public ImageCodec {
public:
    std::optional<ImageSize> measure(const Bytes&) override { return std::nullopt; }
    std::optional<std::string> typeIdentifier(const Bytes&) override { return std::nullopt; }
    std::optional<bool> hasAlpha(const Bytes&) override { return std::nullopt; }
    bool canEncode(std::string_view) override { return false; }
    std::optional<Bytes> encodePng(const Bytes&) override { return std::nullopt; }
    std::optional<Bytes> encodeJpeg(const Bytes&, double) override { return std::nullopt; }
};

} // namespace

std::unique_ptr<ImageCodec> makeHeadlessImageCodec(std::function<void(const std::string& message)>) {
    return std::make_unique<NoImageCodec>();
}

} // namespace tavel
