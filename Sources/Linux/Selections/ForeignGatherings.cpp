#include "Linux/Contents/TargetNames.h"
#include "Linux/Selections/ForeignContent.h"
#include "Platform/EventLoop.h"
#include "Platform/FileList.h"
#include "Platform/PasteboardTypes.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace tavel {

namespace {

/// The most bytes of one value that this process takes over from another program to add types to its content.
constexpr std::size_t largestTakenOver = std::size_t{128} << 20;

std::size_t limitForAddTypes(std::string_view type) {
    return type == pasteboardType::fileUrl ? largestUrlBytes(mostFilesOfAContent) : largestTakenOver;
}

} // namespace

/// What a caller holds of its gathering.
class ForeignContent::Handle final : public Gathering {
public:
    explicit Handle(std::weak_ptr<State> state) : state_(std::move(state)) {}
    ~Handle() override {
        if (const auto state = state_.lock())
            state->done = nullptr;
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

private:
    std::weak_ptr<State> state_;
};

std::unique_ptr<Gathering> ForeignContent::gather(const std::vector<WantedValue>& wanted,
                                                  const Pasteboard::Gathered& done) {
    auto state = std::make_shared<State>();
    state->done = done;
    for (const WantedValue& one : wanted) {
        if (!isThere(one.type) && !targetName::giving(one.type, known_.targets).empty())
            state->wishes.push_back({one});
    }
    return start(std::move(state));
}

/// The required types come first: the others may cost them no time.
std::unique_ptr<Gathering> ForeignContent::gatherForAddTypes(std::span<const std::string> required,
                                                             const Pasteboard::Gathered& done) {
    auto state = std::make_shared<State>();
    state->done = done;
    state->isForAddTypes = true;
    std::deque<Wish> privateWishes;
    std::unordered_set<std::string> seen;
    for (const std::string& target : known_.targets) {
        const auto type = targetName::typeOf(target);
        if (!type || !seen.insert(*type).second)
            continue;
        const WantedValue wanted{*type, limitForAddTypes(*type)};
        if (std::ranges::find(required, *type) == required.end()) {
            privateWishes.push_back({wanted, true});
        } else {
            state->required.push_back(*type);
            state->wishes.push_back({wanted});
        }
    }
    state->wishes.insert(state->wishes.end(), privateWishes.begin(), privateWishes.end());
    return start(std::move(state));
}

std::unique_ptr<Gathering> ForeignContent::start(std::shared_ptr<State> state) {
    state->isCurrent = !unknown_;
    if (unknown_ || state->wishes.empty() || isSilent_ || questions_->isLost()) {
        const auto outer = std::exchange(running_, state);
        const Pasteboard::Gathered done = std::exchange(state->done, nullptr);
        const auto restore = [&] { running_ = outer; };
        try {
            done(state->isCurrent);
        } catch (...) {
            restore();
            throw;
        }
        restore();
        return nullptr;
    }
    auto handle = std::make_unique<Handle>(state);
    active_.push_back(std::move(state));
    return handle;
}

bool ForeignContent::canAddTypes() const {
    return running_ != nullptr && running_->isForAddTypes && running_->isCurrent &&
           std::ranges::all_of(running_->required, [this](const std::string& type) {
               const auto found = running_->values.find(type);
               return found != running_->values.end() && !found->second.source.isCut;
           });
}

void ForeignContent::runFinished() {
    while (!finished_.empty()) {
        const std::shared_ptr<State> state = std::move(finished_.front());
        finished_.pop_front();
        const Pasteboard::Gathered done = std::exchange(state->done, nullptr);
        if (!done)
            continue;
        running_ = state;
        runOrAbandon([&] { done(state->isCurrent); });
        running_.reset();
    }
}

} // namespace tavel
