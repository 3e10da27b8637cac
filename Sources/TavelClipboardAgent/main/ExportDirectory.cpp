#include "TavelClipboardAgent/main/ExportDirectory.h"

#include "Support/Files.h"

namespace tavel {

void ExportDirectory::create() {
    static_cast<void>(createPrivateDirectory(path_));
}

bool ExportDirectory::whileThere(const std::function<void()>& write) {
    const std::lock_guard lock(mutex_);
    if (removed_)
        return false;
    write();
    return true;
}

void ExportDirectory::remove() {
    const std::lock_guard lock(mutex_);
    removed_ = true;
    static_cast<void>(removeTree(path_));
}

} // namespace tavel
