#include "Linux/Wayland/WaylandSelections.h"

#include "Linux/Contents/OwnedTargets.h"

#include <algorithm>
#include <new>
#include <utility>

namespace tavel {

namespace {

/// What a descriptor is for.
enum class Use : std::uint64_t { compositor, reading, serving };

constexpr std::uint64_t uses = 3;

template <Use use>
std::uint64_t keyOf(std::uint64_t number) {
    return number * uses + static_cast<std::uint64_t>(use);
}

constexpr std::uint64_t compositorKey = static_cast<std::uint64_t>(Use::compositor);

} // namespace

std::shared_ptr<WaylandSelections> WaylandSelections::open(const std::string& display,
                                                           const std::filesystem::path& module,
                                                           const WaylandConnection::Log& log,
                                                           const TransferTimeOuts& timeOuts,
                                                           std::string* refusal) {
    std::shared_ptr<WaylandSelections> selections(new WaylandSelections(timeOuts));
    auto connection = WaylandConnection::open(display, selections->events(), module, log, refusal);
    if (connection == nullptr)
        return nullptr;
    selections->begin(std::move(connection));
    return selections;
}

WaylandSelections::WaylandSelections(const TransferTimeOuts& timeOuts)
    : timeOuts_(timeOuts), server_(descriptors_, keyOf<Use::serving>, timeOuts.requestorInactivity) {}

void WaylandSelections::begin(std::unique_ptr<WaylandConnection> connection) {
    connection_ = std::move(connection);
    descriptors_.add(connection_->descriptor(), ReadyDescriptors::For::reading, compositorKey);
    reader_.emplace(*connection_, descriptors_, keyOf<Use::reading>, timeOuts_);
    const std::size_t count = connection_->hasPrimary() ? kinds : kinds - 1;
    for (std::size_t kind = 0; kind < count; ++kind) {
        selections_.push_back(
            std::make_unique<WaylandSelection>(*this, static_cast<WaylandSelectionKind>(kind), *reader_,
                                               std::move(beginnings_[kind]), timeOuts_));
    }
}

/// What is told goes through C code, which must see no exception.
DataControlEvents WaylandSelections::events() {
    static constexpr auto self = [](void* receiver) -> WaylandSelections& {
        return *static_cast<WaylandSelections*>(receiver);
    };
    return {this,
            [](void* receiver, WaylandSelectionKind kind, std::uint64_t offer,
               std::vector<std::string> types) { self(receiver).selected(kind, offer, std::move(types)); },
            [](void* receiver, std::uint64_t source, std::string_view type, int descriptor) {
                self(receiver).requested(source, type, descriptor);
            },
            [](void* receiver, std::uint64_t source) { self(receiver).cancelled(source); },
            [](void* receiver, std::uint64_t question) { self(receiver).answered(question); }};
}

void WaylandSelections::selected(WaylandSelectionKind kind, std::uint64_t offer,
                                 std::vector<std::string> types) {
    const auto index = static_cast<std::size_t>(kind);
    if (index < selections_.size())
        selections_[index]->selected({offer, std::move(types)});
    else if (selections_.empty())
        beginnings_[index] = {offer, std::move(types)};
}

void WaylandSelections::requested(std::uint64_t source, std::string_view type, int descriptor) {
    Descriptor reader(descriptor);
    try {
        const auto content = contentOf(source);
        const auto value = content ? valueForTarget(content->items, std::string(type)) : std::nullopt;
        if (value)
            server_.serve(std::move(reader), value->bytes);
    } catch (const std::bad_alloc&) {
        // The reader finds its pipe closed.
    }
}

std::shared_ptr<const OwnedContent> WaylandSelections::contentOf(std::uint64_t source) const {
    for (const auto& selection : selections_) {
        if (auto content = selection->contentOf(source))
            return content;
    }
    return nullptr;
}

void WaylandSelections::cancelled(std::uint64_t source) {
    for (const auto& selection : selections_)
        selection->cancelled(source);
}

void WaylandSelections::answered(std::uint64_t question) {
    lastAnswer_ = question;
    if (reader_)
        reader_->handleAnswer(question);
    for (const auto& selection : selections_)
        selection->answered(question);
}

bool WaylandSelections::has(const std::optional<std::string>& pasteboardName) const {
    return !pasteboardName || (*pasteboardName == primaryName && connection_->hasPrimary());
}

Selection& WaylandSelections::selection(const std::optional<std::string>& pasteboardName) {
    return *selections_.at(static_cast<std::size_t>(pasteboardName ? WaylandSelectionKind::primary
                                                                   : WaylandSelectionKind::clipboard));
}

void WaylandSelections::synchronize() {
    awaitRequests();
}

bool WaylandSelections::awaitRequests() {
    const std::uint64_t question = connection_->ask();
    if (question == 0)
        return false;
    connection_->dispatchUntil([&] { return isAnswered(question); });
    return isAnswered(question);
}

bool WaylandSelections::isServing() const {
    return !isLost() && (server_.isServing() || std::ranges::any_of(selections_, [](const auto& selection) {
                             return selection->owned != nullptr && !selection->owned->items.empty();
                         }));
}

void WaylandSelections::flush() {
    if (isLost() || connection_->flush() == takesRequests_)
        return;
    takesRequests_ = !takesRequests_;
    descriptors_.change(connection_->descriptor(),
                        takesRequests_ ? ReadyDescriptors::For::reading
                                       : ReadyDescriptors::For::readingAndWriting,
                        compositorKey);
}

bool WaylandSelections::hasWork() const {
    return std::ranges::any_of(selections_, [](const auto& selection) { return selection->hasWork(); });
}

std::optional<WaylandSelections::Clock::time_point> WaylandSelections::nextDeadline() const {
    auto next = server_.nextDeadline();
    const auto limit = [&next](std::optional<Clock::time_point> one) {
        if (one)
            next = std::min(next.value_or(*one), *one);
    };
    limit(reader_->nextDeadline());
    for (const auto& selection : selections_)
        limit(selection->foreign.nextDeadline());
    return next;
}

void WaylandSelections::dispatch() {
    for (const std::uint64_t key : descriptors_.ready()) {
        const std::uint64_t number = key / uses;
        switch (static_cast<Use>(key % uses)) {
        case Use::compositor:
            connection_->dispatch();
            break;
        case Use::reading:
            reader_->read(number);
            break;
        case Use::serving:
            server_.write(number);
            break;
        }
    }
    const auto now = Clock::now();
    server_.giveUpOverdue(now);
    reader_->giveUpOverdue(now);
    for (const auto& selection : selections_)
        selection->proceed(now);
    for (const auto& selection : selections_)
        selection->tell();
    flush();
}

} // namespace tavel
