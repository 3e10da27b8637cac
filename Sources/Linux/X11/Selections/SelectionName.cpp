#include "Linux/X11/Selections/SelectionName.h"

#include <glib.h>

#include <cstdint>
#include <limits>
#include <memory>

namespace tavel {

namespace {

bool canBeAtom(const std::string& name) {
    return !name.empty() && name.size() <= std::numeric_limits<std::uint16_t>::max() &&
           name.find('\0') == std::string::npos;
}

} // namespace

std::string selectionNameOf(const std::optional<std::string>& pasteboardName) {
    if (!pasteboardName)
        return "CLIPBOARD";
    if (canBeAtom(*pasteboardName))
        return *pasteboardName;
    const std::unique_ptr<char, void (*)(void*)> digest(
        g_compute_checksum_for_data(G_CHECKSUM_SHA256,
                                    reinterpret_cast<const guchar*>(pasteboardName->data()),
                                    pasteboardName->size()),
        g_free);
    return std::string("TAVEL_PASTEBOARD_") + digest.get();
}

} // namespace tavel
