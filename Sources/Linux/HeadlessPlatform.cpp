#include "Linux/HeadlessPlatform.h"

#include "Linux/Store/StoreDirectory.h"

namespace tavel {

std::string HeadlessPlatform::describePasteboard(const std::optional<std::string>&) {
    return "the pasteboards in " + pasteboardStoreDirectory().string() + ", as no display has a clipboard";
}

} // namespace tavel
