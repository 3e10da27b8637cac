#include "Linux/Panel/OnDemandNamePanelView.h"

#include "Linux/Base/Modules.h"
#include "Linux/Panel/ProcessNamePanelView.h"

#include <stdexcept>

namespace tavel {

std::filesystem::path namePanelProgramPath() {
    return moduleDirectory() / "tavel-panel";
}

std::unique_ptr<NamePanelView> makeOnDemandNamePanelView(const NamePanelTexts& texts,
                                                         const NamePanelActions& actions, const Log& log,
                                                         const std::filesystem::path& program) {
    try {
        return std::make_unique<ProcessNamePanelView>(texts, actions, log, program);
    } catch (const std::runtime_error& error) {
        log(std::string("The naming panel cannot be shown: ") + error.what());
        return nullptr;
    }
}

} // namespace tavel
