#include "TavelClipboardAgent/FilePaste/FilePaste.h"

#include "Support/Error.h"
#include "TavelClipboardAgent/Messages.h"

#include <string>
#include <utility>

namespace tavel {

FilePaste::FilePaste(KeyboardTap& tap, std::shared_ptr<Pasteboard> board, std::filesystem::path root,
                     std::function<void(std::int64_t)> changed)
    : tap_(tap), board_(std::move(board)), root_(std::move(root)), changed_(std::move(changed)) {}

void FilePaste::configure(bool enabled) {
    enabled_ = enabled;
    if (tapCreated_) {
        tap_.setEnabled(enabled);
        return;
    }
    if (!enabled)
        return;
    // Every key goes on to its target.
    tapCreated_ = tap_.create([](const KeyEvent&) { return KeyVerdict::pass; });
    if (!tapCreated_) {
        enabled_ = false;
        throw Error("Tavel", 1, std::string(messages::pasteNotPermitted));
    }
}

} // namespace tavel
