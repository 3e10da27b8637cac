#include "Linux/Panel/LoggedErrors.h"

namespace tavel {

bool LoggedErrors::receive(int descriptor) {
    const bool isOpen = lines_.receive(descriptor);
    while (const auto line = lines_.next()) {
        logged_ += line->size();
        if (!line->empty() && logged_ <= mostBytes)
            log_("tavel-panel: " + *line);
    }
    return isOpen;
}

} // namespace tavel
