#include "Linux/X11/Selections/ForeignContent.h"

#include "Linux/Contents/TargetNames.h"
#include "Platform/EventLoop.h"
#include "Platform/PasteboardTypes.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>
#include <utility>

namespace tavel {

namespace {

/// Besides its types an owner offers targets of the protocol.
constexpr std::size_t mostProtocolTargets = 16;
constexpr std::size_t largestTargetListBytes =
    (pasteboardType::mostTypes + mostProtocolTargets) * sizeof(xcb_atom_t);

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

ForeignContent::ForeignContent(X11Connection& connection, SelectionReader& reader,
                               const TransferTimeOuts& timeOuts, xcb_atom_t selection)
    : connection_(connection), reader_(reader), timeOuts_(timeOuts), selection_(selection) {}

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
            reader_.take(*std::exchange(unknown_->ticket, std::nullopt));
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
        reader_.take(*fetch->ticket);
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
            return reader_.isDecided(*unknown_->ticket);
        return isWatched_ && (!unknown_->fetch || needsAttention(*unknown_->fetch));
    }
    if (active_.empty())
        return false;
    const State& first = *active_.front();
    return !first.done || !first.fetch || needsAttention(*first.fetch);
}

bool ForeignContent::needsAttention(const Fetch& fetch) const {
    return !fetch.ticket || reader_.isDecided(*fetch.ticket);
}

void ForeignContent::proceed(Clock::time_point now) {
    if (connection_.isLost()) {
        vanish();
        return;
    }
    if (!isWatched_)
        return;
    // Only its time tells a refusal of the next request from a late refusal.
    if ((unknown_ || !active_.empty()) && reader_.awaitsLateAnswers() && hasWork())
        connection_.fetchTime(); // dispatches events: everything here may have changed
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
            unknown.ticket = ask(connection_.atom("TARGETS"), largestTargetListBytes);
            return false;
        }
        if (!reader_.isDecided(*unknown.ticket))
            return false;
        isSilent_ = reader_.hasTimedOut(*unknown.ticket);
        const auto answer = reader_.take(*std::exchange(unknown.ticket, std::nullopt));
        unknown.offer = Offer{unknown.changeCount};
        if (answer && answer->format == 32)
            unknown.offer->targets = targetNames(answer->bytes);
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
            state.privateEnd = now + timeOuts_.privateTypes;
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
            if (!reader_.isDecided(*fetch.ticket))
                return false;
            isSilent_ = isSilent_ || reader_.hasTimedOut(*fetch.ticket);
            auto answer = reader_.take(*std::exchange(fetch.ticket, std::nullopt));
            auto value = answer ? valueOf(fetch, *std::move(answer)) : std::nullopt;
            if (value) {
                values.insert_or_assign(fetch.type, *std::move(value));
                return true;
            }
        }
        if (isSilent_ || fetch.asked == fetch.targets.size())
            return true;
        const std::string& target = fetch.targets[fetch.asked++];
        fetch.ticket = ask(connection_.atom(target), largestValue(fetch.type, fetch.limit));
    }
}

std::optional<GatheredValue> ForeignContent::valueOf(const Fetch& fetch, SelectionReader::Answer answer) {
    SelectionValue source{fetch.targets[fetch.asked - 1], connection_.atomNames({&answer.type, 1}).front(),
                          answer.format, std::move(answer.bytes), answer.isCut};
    auto data = dataFrom(source, fetch.type);
    if (!data)
        return std::nullopt;
    return GatheredValue{std::move(source), *std::move(data)};
}

SelectionReader::Ticket ForeignContent::ask(xcb_atom_t target, std::size_t limit) {
    return reader_.ask({selection_, target, connection_.latestTime(), limit});
}

/// The names of a list of atoms, each once, without those that are too long for a type.
std::vector<std::string> ForeignContent::targetNames(const Bytes& list) {
    std::vector<xcb_atom_t> atoms(list.size() / sizeof(xcb_atom_t));
    if (!atoms.empty())
        std::memcpy(atoms.data(), list.data(), atoms.size() * sizeof(xcb_atom_t));
    std::vector<std::string> targets;
    std::unordered_set<std::string> seen;
    for (std::string& name : connection_.atomNames(atoms)) {
        if (pasteboardType::isReadableName(name) && seen.insert(name).second)
            targets.push_back(std::move(name));
    }
    return targets;
}

std::optional<ForeignContent::Clock::time_point> ForeignContent::nextDeadline() const {
    return active_.empty() ? std::nullopt : active_.front()->privateEnd;
}

} // namespace tavel
