#include "TavelClipboardAgent/main/Output.h"

#include "Support/Files.h"

#include <string>

namespace tavel {

void Output::emit(JsonObject message) {
    if (!message.isValid())
        return;
    const std::string line = message.takeLine();
    const std::lock_guard guard(lock_);
    // A parent that is gone is noticed by the end of standard input and by the parent watch, not here.
    static_cast<void>(writeAll(descriptor_, line));
}

} // namespace tavel
