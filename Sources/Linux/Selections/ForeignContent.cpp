#include "Linux/Selections/ForeignContent.h"

#include "Linux/Contents/TargetNames.h"
#include "Platform/EventLoop.h"
#include "Platform/PasteboardTypes.h"

#include <algorithm>
#include <utility>

namespace tavel {

namespace {

/// Comments before the first URL of a list.
constexpr std::size_t commentBytes = 4096;

std::size_t largestValue(std::string_view type, std::size_t limit) {
    if (type == pasteboardType::fileUrl)
        return limit + commentBytes;
    if (type == pasteboardType::string)
        return largestPlainTextValue(limit);
    return type == pasteboardType::html ? largestHtmlValue(limit) : limit;
}

/// The value as data of the type; nullopt if it is malformed for that type.
std::optional<Bytes> dataFrom(const SelectionValue& value, std::string_view type) {
    if (type == pasteboardType::fileUrl)
        return value.format == 8 ? std::optional(value.bytes) : std::nullopt;
    if (type == pasteboardType::string)
        return plainTextOf(value);
    return type == pasteboardType::html ? htmlOf(value) : value.bytes;
}

} // namespace

ForeignContent::ForeignContent(std::unique_ptr<OwnerQuestions> questions, const TransferTimeOuts& timeOuts)
    : questions_(std::move(questions)), privateTypesTimeOut_(timeOuts.privateTypes) {}

void ForeignContent::replace(std::int64_t changeCount, Clock::time_point now) {
    giveUp(false);
    const bool wasUnknown = unknown_.has_value();
    if (wasUnknown && now - unknownSince_ >= longestUnnoticed)
        known_ = Offer{unknown_->changeCount};
    if (!wasUnknown || known_.changeCount == unknown_->changeCount)
        unknownSince_ = now;
    unknown_ = Unknown{changeCount};
}

void ForeignContent::replaceByOwn(std::int64_t changeCount) {
    giveUp(false);
    unknown_.reset();
    known_ = Offer{changeCount};
}

void ForeignContent::vanish() {
    giveUp(true);
    known_ = Offer{unknown_ ? unknown_->changeCount : known_.changeCount};
    unknown_.reset();
}

/// Ends all gatherings, those that are about to be told of their end included.
void ForeignContent::giveUp(bool isCurrent) {
    if (unknown_) {
        end(unknown_->fetch);
        if (unknown_->ticket)
            questions_->takeTargets(*std::exchange(unknown_->ticket, std::nullopt));
    }
    for (const auto& state : active_)
        end(state->fetch);
    finished_.splice(finished_.end(), active_); // needs no memory: no change may be lost for want of it
    if (isCurrent)
        return;
    for (const auto& state : finished_) {
        state->isCurrent = false;
        state->values.clear();
    }
}

void ForeignContent::end(std::optional<Fetch>& fetch) {
    if (fetch && fetch->ticket)
        questions_->take(*fetch->ticket, fetch->targets[fetch->asked - 1]);
    fetch.reset();
}

const GatheredValue* ForeignContent::value(std::string_view type) const {
    if (running_ != nullptr) {
        if (const auto found = running_->values.find(type); found != running_->values.end())
            return &found->second;
    }
    const auto found = known_.values.find(type);
    return found != known_.values.end() ? &found->second : nullptr;
}

/// Whether the whole value of the type came with the targets.
bool ForeignContent::isThere(std::string_view type) const {
    const auto found = known_.values.find(type);
    return found != known_.values.end() && !found->second.source.isCut;
}

bool ForeignContent::hasWork() const {
    if (!finished_.empty())
        return true;
    if (unknown_) {
        if (unknown_->ticket)
            return questions_->isDecided(*unknown_->ticket);
        return isWatched_ && (!unknown_->fetch || needsAttention(*unknown_->fetch));
    }
    if (active_.empty())
        return false;
    const State& first = *active_.front();
    return !first.done || !first.fetch || needsAttention(*first.fetch);
}

bool ForeignContent::needsAttention(const Fetch& fetch) const {
    return !fetch.ticket || questions_->isDecided(*fetch.ticket);
}

void ForeignContent::proceed(Clock::time_point now) {
    if (questions_->isLost()) {
        vanish();
        return;
    }
    if (!isWatched_)
        return;
    if ((unknown_ || !active_.empty()) && hasWork())
        questions_->prepare(); // may handle events: everything here may have changed
    if (unknown_) {
        if (!proceed(*unknown_))
            return;
        known_ = *std::move(unknown_->offer);
        unknown_.reset();
    }
    while (!active_.empty()) {
        State& first = *active_.front();
        if (!first.done)
            end(first.fetch);
        else if (!proceed(first, now))
            return;
        finished_.splice(finished_.end(), active_, active_.begin());
    }
}

/// False as long as something is on its way.
bool ForeignContent::proceed(Unknown& unknown) {
    if (!unknown.offer) {
        if (!unknown.ticket) {
            isSilent_ = false;
            unknown.ticket = questions_->askForTargets();
        }
        if (!questions_->isDecided(*unknown.ticket))
            return false;
        isSilent_ = questions_->hasTimedOut(*unknown.ticket);
        unknown.offer = Offer{unknown.changeCount};
        unknown.offer->targets = questions_->takeTargets(*std::exchange(unknown.ticket, std::nullopt));
    }
    for (; unknown.values < valuesWithTargets_.size(); ++unknown.values) {
        if (!unknown.fetch)
            unknown.fetch = fetchOf(valuesWithTargets_[unknown.values], unknown.offer->targets);
        if (!proceed(*unknown.fetch, unknown.offer->values))
            return false;
        unknown.fetch.reset();
    }
    return true;
}

bool ForeignContent::proceed(State& state, Clock::time_point now) {
    while (!state.wishes.empty()) {
        const Wish& wish = state.wishes.front();
        if (wish.isPrivate && !state.privateEnd)
            state.privateEnd = now + privateTypesTimeOut_;
        if (state.privateEnd && now >= *state.privateEnd) {
            end(state.fetch);
            return true;
        }
        if (!state.fetch) {
            state.fetch = fetchOf(wish.value, known_.targets);
            if (state.isForAddTypes)
                state.fetch->limit = std::min(state.fetch->limit, state.room);
        }
        if (!proceed(*state.fetch, state.values))
            return false;
        const auto value = state.values.find(wish.value.type);
        if (state.isForAddTypes && value != state.values.end())
            state.room -= std::min(state.room, value->second.data.size());
        state.fetch.reset();
        state.wishes.pop_front();
    }
    return true;
}

ForeignContent::Fetch ForeignContent::fetchOf(const WantedValue& wanted,
                                              std::span<const std::string> targets) const {
    return {wanted.type, wanted.limit, targetName::giving(wanted.type, targets)};
}

/// Asks for one target after the other until one gives the value. False as long as one is on its way.
bool ForeignContent::proceed(Fetch& fetch, Values& values) {
    for (;;) {
        if (fetch.ticket) {
            if (!questions_->isDecided(*fetch.ticket))
                return false;
            isSilent_ = isSilent_ || questions_->hasTimedOut(*fetch.ticket);
            auto answer =
                questions_->take(*std::exchange(fetch.ticket, std::nullopt), fetch.targets[fetch.asked - 1]);
            auto value = answer ? valueOf(fetch, *std::move(answer)) : std::nullopt;
            if (value) {
                values.insert_or_assign(fetch.type, *std::move(value));
                return true;
            }
        }
        if (isSilent_ || fetch.asked == fetch.targets.size())
            return true;
        const std::string& target = fetch.targets[fetch.asked++];
        fetch.ticket = questions_->ask(target, largestValue(fetch.type, fetch.limit));
    }
}

std::optional<GatheredValue> ForeignContent::valueOf(const Fetch& fetch, SelectionValue source) {
    auto data = dataFrom(source, fetch.type);
    if (!data)
        return std::nullopt;
    return GatheredValue{std::move(source), *std::move(data)};
}

std::optional<ForeignContent::Clock::time_point> ForeignContent::nextDeadline() const {
    return active_.empty() ? std::nullopt : active_.front()->privateEnd;
}

} // namespace tavel
