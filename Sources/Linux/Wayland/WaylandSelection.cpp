#include "Linux/Wayland/WaylandSelection.h"

#include "Linux/Contents/OwnedTargets.h"
#include "Linux/Wayland/WaylandSelections.h"

#include <algorithm>
#include <utility>

namespace tavel {

namespace {

/// A compositor tells every program of all types at once, this one included, and drops a connection whose
/// buffer they overfill (sway: at about 170,000 bytes).
constexpr std::size_t mostNameBytes = std::size_t{64} * 1024;

bool canBeTold(const std::vector<std::string>& types) {
    std::size_t bytes = 0;
    for (const std::string& type : types)
        bytes += type.size();
    return bytes <= mostNameBytes;
}

} // namespace

WaylandSelection::WaylandSelection(WaylandSelections& selections, WaylandSelectionKind kind,
                                   PipeReader& reader, WaylandOffer beginning,
                                   const TransferTimeOuts& timeOuts)
    : WaylandSelection(selections, kind, reader, std::make_shared<WaylandOffer>(std::move(beginning)),
                       timeOuts) {
    if (offer_->number != 0)
        foreign.replace(changeCount, Clock::now());
    else
        foreign.replaceByOwn(changeCount); // nobody's
}

WaylandSelection::WaylandSelection(WaylandSelections& selections, WaylandSelectionKind kind,
                                   PipeReader& reader, const std::shared_ptr<WaylandOffer>& offer,
                                   const TransferTimeOuts& timeOuts)
    : Selection(std::make_unique<WaylandOwnerQuestions>(selections.connection(), reader, offer), timeOuts),
      selections_(selections), kind_(kind), offer_(offer) {}

void WaylandSelection::synchronize() {
    selections_.synchronize();
}

bool WaylandSelection::isLost() const {
    return selections_.isLost();
}

std::optional<std::int64_t> WaylandSelection::own(OwnedContent content) {
    const std::vector<std::string> types = contentTargets(content.items);
    if (!canBeTold(types))
        return std::nullopt;
    Types typeSet(types.begin(), types.end());
    auto shared = std::make_shared<const OwnedContent>(std::move(content));
    WaylandConnection& connection = selections_.connection();
    const std::uint64_t question = connection.ask();
    const std::uint64_t source = question != 0 ? connection.select(kind_, types) : 0;
    if (source == 0)
        return std::nullopt;
    questionBeforeSource_ = question;
    sources_.emplace(source, std::move(shared));
    source_ = source;
    sourceTypes_ = std::move(typeSet);
    sourceCount_.reset();
    if (!selections_.awaitRequests() && !sourceCount_) {
        withdraw();
        return std::nullopt;
    }
    if (!sourceCount_)
        becomeOwner(); // a compositor that does not tell the owner
    return sourceCount_;
}

/// The compositor has stopped, or has gone. Should it go on, it finds that nothing was to be written.
void WaylandSelection::withdraw() {
    WaylandConnection& connection = selections_.connection();
    connection.withdraw(source_);
    sources_.erase(source_);
    source_ = 0;
    if (const std::uint64_t question = connection.ask(); question != 0)
        withdrawn_.push_back({std::move(sourceTypes_), questionBeforeSource_, question});
}

void WaylandSelection::answered(std::uint64_t question) {
    std::erase_if(withdrawn_, [&](const Withdrawn& one) { return one.questionAfter <= question; });
}

void WaylandSelection::selected(WaylandOffer offer) {
    if (isWithdrawn(offer)) {
        owned.reset();
        foreign.vanish();
        return;
    }
    if (source_ != 0 && selections_.isAnswered(questionBeforeSource_) && isOffer(offer, sourceTypes_)) {
        if (!sourceCount_)
            becomeOwner();
        return;
    }
    const bool isAwaited = source_ != 0 && !sourceCount_; // ours comes after this content
    if (!isAwaited)
        source_ = 0;
    owned.reset();
    *offer_ = std::move(offer);
    if (offer_->number == 0) {
        foreign.vanish();
        return;
    }
    ++changeCount;
    foreign.replace(changeCount, Clock::now());
}

void WaylandSelection::cancelled(std::uint64_t source) {
    if (sources_.erase(source) == 0 || source != source_)
        return;
    if (!sourceCount_)
        becomeOwner(); // and lost it again at once
    source_ = 0;
    owned.reset();
}

std::shared_ptr<const OwnedContent> WaylandSelection::contentOf(std::uint64_t source) const {
    const auto found = sources_.find(source);
    return found != sources_.end() ? found->second : nullptr;
}

/// Whether the offer can be that of a source with these types. Compositors pass the types on in their own
/// ways: each once or as they were offered.
bool WaylandSelection::isOffer(const WaylandOffer& offer, const Types& types) {
    return offer.number != 0 &&
           (offer.targets.size() == types.size() || offer.targets.size() == mostOfferedTypes) &&
           std::ranges::all_of(offer.targets, [&](const std::string& type) { return types.contains(type); });
}

bool WaylandSelection::isWithdrawn(const WaylandOffer& offer) {
    const auto found = std::ranges::find_if(withdrawn_, [&](const Withdrawn& one) {
        return selections_.isAnswered(one.questionBefore) && isOffer(offer, one.types);
    });
    if (found == withdrawn_.end())
        return false;
    withdrawn_.erase(found);
    return true;
}

void WaylandSelection::becomeOwner() {
    ++changeCount;
    sourceCount_ = changeCount;
    const auto found = sources_.find(source_);
    owned = found != sources_.end() ? found->second : nullptr;
    foreign.replaceByOwn(changeCount);
}

} // namespace tavel
