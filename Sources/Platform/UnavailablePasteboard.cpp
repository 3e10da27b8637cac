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

std::optional<Bytes> UnavailablePasteboard::string(std::string_view, std::size_t) {
    return std::nullopt;
}

std::optional<Bytes> UnavailablePasteboard::data(std::string_view, std::size_t) {
    return std::nullopt;
}

FileList UnavailablePasteboard::files(const FileListLimit&) {
    return {};
}

bool UnavailablePasteboard::canHold(const Representation&) {
    return true; // the content is not to blame for the refusal of every write
}

std::optional<std::int64_t> UnavailablePasteboard::replaceWithValues(std::span<const PasteboardValue>) {
    return std::nullopt;
}

std::optional<std::int64_t> UnavailablePasteboard::replaceWithItems(std::span<const PasteboardItem>) {
    return std::nullopt;
}

std::optional<std::int64_t> UnavailablePasteboard::addTypes(std::span<const Representation>) {
    return std::nullopt;
}

} // namespace tavel
