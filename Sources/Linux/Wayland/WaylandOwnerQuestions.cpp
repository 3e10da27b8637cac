#include "Linux/Wayland/WaylandOwnerQuestions.h"

#include "Linux/Contents/TargetNames.h"
#include "Support/Text.h"

namespace tavel {

std::optional<SelectionValue> WaylandOwnerQuestions::take(Ticket ticket, const std::string& target) {
    auto answer = reader_.take(ticket);
    if (!answer)
        return std::nullopt;
    // Nothing declares the encoding here. Wayland's own programs write UTF-8 under the names of X11, whose
    // programs mean Latin-1 by STRING.
    const bool isNameOfX11 = target == targetName::latin1String || target == targetName::anyText;
    const bool isText = isNameOfX11 && isUtf8(answer->isCut ? withoutPartialCharacter(answer->bytes.view())
                                                            : answer->bytes.view());
    std::string type(isText ? targetName::utf8String : isNameOfX11 ? targetName::latin1String : target);
    return SelectionValue{target, std::move(type), 8, std::move(answer->bytes), answer->isCut};
}

} // namespace tavel
