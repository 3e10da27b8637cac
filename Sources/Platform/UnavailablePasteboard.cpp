#include "Platform/UnavailablePasteboard.h"

namespace tavel {

std::int64_t UnavailablePasteboard::changeCount() {
    return 0;
}

std::int64_t UnavailablePasteboard::noticedChangeCount() {
    return 0;
}

std::vector<std::string> UnavailablePasteboard::types() {
    return {};
}

std::optional<std::string> UnavailablePasteboard::availableType(std::span<const std::string_view>) {
    return std::nullopt;
}

std::optional<Bytes> UnavailablePasteboard::string(std::string_view) {
    return std::nullopt;
}

std::optional<Bytes> UnavailablePasteboard::data(std::string_view) {
    return std::nullopt;
}

std::vector<std::string> UnavailablePasteboard::filePaths() {
    return {};
}

std::int64_t UnavailablePasteboard::clearContents() {
    return 0;
}

bool UnavailablePasteboard::setString(std::string_view, std::string_view) {
    return false;
}

bool UnavailablePasteboard::setData(const Bytes&, std::string_view) {
    return false;
}

bool UnavailablePasteboard::canHold(const Representation&) {
    return true; // nothing can be written, but not because of what it is
}

bool UnavailablePasteboard::writeItems(std::span<const PasteboardItem>) {
    return false;
}

bool UnavailablePasteboard::addTypes(std::span<const Representation>) {
    return false;
}

bool UnavailablePasteboard::update(const std::function<bool()>& steps) {
    return steps();
}

} // namespace tavel
