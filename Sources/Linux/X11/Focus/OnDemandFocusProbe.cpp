#include "Linux/X11/Focus/OnDemandFocusProbe.h"

#include "Linux/Base/Modules.h"

#include <stdexcept>
#include <utility>

namespace tavel {

OnDemandFocusProbe::OnDemandFocusProbe(X11Connection& connection, DecisionDeadline& deadline, Log log,
                                       std::filesystem::path module)
    : connection_(connection), deadline_(deadline), log_(std::move(log)), path_(std::move(module)) {}

void OnDemandFocusProbe::follow(bool on) {
    if (on && probe_ == nullptr)
        load();
    if (probe_ != nullptr)
        module_->follow(*probe_, on);
}

void OnDemandFocusProbe::load() {
    try {
        module_ = reinterpret_cast<FocusModuleEntry>(loadModuleEntry(path_, focusModuleEntryName))();
        probe_ = {module_->make(connection_, connection_.replyWaiter(), deadline_), module_->destroy};
    } catch (const std::runtime_error& error) {
        log_(std::string("The keyboard focus cannot be followed: ") + error.what());
    }
}

std::optional<RunningApplication> OnDemandFocusProbe::frontmostApplication() {
    return probe_ == nullptr ? std::nullopt : module_->frontmostApplication(*probe_);
}

bool OnDemandFocusProbe::isTrusted() {
    return probe_ != nullptr && module_->isTrusted(*probe_);
}

std::optional<std::string> OnDemandFocusProbe::focusedRole(std::int32_t processIdentifier) {
    return probe_ == nullptr ? std::nullopt : module_->focusedRole(*probe_, processIdentifier);
}

void OnDemandFocusProbe::activate(std::int32_t processIdentifier) {
    if (probe_ != nullptr)
        module_->activate(*probe_, processIdentifier);
}

} // namespace tavel
