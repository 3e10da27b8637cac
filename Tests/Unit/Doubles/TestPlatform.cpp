#include "Tests/Unit/Doubles/TestPlatform.h"

#include <utility>

namespace tavel {

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
