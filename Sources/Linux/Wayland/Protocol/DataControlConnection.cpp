#include "Linux/Wayland/Protocol/DataControlConnection.h"

#include "Linux/Wayland/Protocol/DataControlGlobals.h"
#include "Platform/PasteboardTypes.h"

#include <fcntl.h>
#include <wayland-client-protocol.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace tavel {
namespace {

/// Longer than any usual burst takes. During a flood, everything else in the process gets its turn after it.
constexpr std::chrono::milliseconds longestBatch{4};

/// The types of one source can be more than a socket holds.
constexpr std::chrono::seconds longestSelect{1};

/// The version of wlr-data-control-unstable-v1 that added the primary selection.
constexpr std::uint32_t versionWithPrimary = 2;

/// The question that `open` waits for.
constexpr std::uint64_t ownQuestion = 0;

/// The protocol ends a string with a NUL, and the request has to fit into libwayland's buffer.
bool canBeSent(const std::string& type) {
    return pasteboardType::isReadableName(type) && type.find('\0') == std::string::npos;
}

/// libwayland gives the connection up if it finds no descriptor to copy this one to.
bool canBeCopied(int descriptor) {
    return static_cast<bool>(Descriptor(fcntl(descriptor, F_DUPFD_CLOEXEC, 0)));
}

auto findProxy(auto& objects, const wl_proxy* proxy) {
    return std::ranges::find_if(objects, [&](const auto& object) { return object.proxy.get() == proxy; });
}

} // namespace

std::unique_ptr<DataControlConnection> DataControlConnection::open(Descriptor socket,
                                                                   Clock::time_point deadline,
                                                                   const DataControlEvents& events,
                                                                   const char*& fault) {
    std::unique_ptr<DataControlConnection> opened(new DataControlConnection(std::move(socket), events));
    fault = opened->bind(deadline);
    return fault == nullptr ? std::move(opened) : nullptr;
}

DataControlConnection::DataControlConnection(Descriptor socket, const DataControlEvents& events)
    : display_(std::move(socket)), events_(events) {}

/// What is wrong with the compositor; null if all is well.
const char* DataControlConnection::bind(Clock::time_point deadline) {
    DataControlGlobals globals(display_);
    if (!awaitAnswer(deadline))
        return faultOfSilence();
    if (const char* const missing = globals.missing())
        return missing;
    interfaces_ = &globals.interfaces();
    manager_ = globals.bindManager();
    const Proxy seat = globals.bindSeat();
    if (manager_ == nullptr || seat == nullptr || !display_.reserveRequest())
        return faultOfSilence();
    device_.reset(wl_proxy_marshal_flags(manager_.get(), dataControl::managerRequest::getDataDevice,
                                         &interfaces_->device, wl_proxy_get_version(manager_.get()), 0,
                                         nullptr, seat.get()));
    if (device_ == nullptr)
        return faultOfSilence();
    listen<&DataControlConnection::handleDevice>(device_.get(), *this);
    return awaitAnswer(deadline) ? nullptr : faultOfSilence();
}

const char* DataControlConnection::faultOfSilence() const {
    return isLost() ? "has closed the connection" : "does not answer";
}

/// Waits until the compositor has carried out all requests. False at the deadline, or if that fails.
bool DataControlConnection::awaitAnswer(Clock::time_point deadline) {
    isAnswered_ = false;
    if (!sendQuestion(ownQuestion))
        return false;
    while (!isAnswered_)
        if (Clock::now() >= deadline || !display_.awaitEvents(deadline))
            return false;
    return !isLost();
}

bool DataControlConnection::hasPrimary() const {
    return interfaces_ == &extDataControl() || wl_proxy_get_version(device_.get()) >= versionWithPrimary;
}

bool DataControlConnection::dispatch() {
    const auto end = Clock::now() + longestBatch;
    bool isMore = true;
    while (isMore && Clock::now() < end)
        isMore = display_.takeIn();
    display_.flush(); // destroys the offers of before
    return isMore && !isLost();
}

std::uint64_t DataControlConnection::select(WaylandSelectionKind kind,
                                            const std::vector<std::string>& types) {
    const bool isPrimary = kind == WaylandSelectionKind::primary;
    if (isPrimary && !hasPrimary())
        return 0;
    sources_.reserve(sources_.size() + 1);
    const auto deadline = Clock::now() + longestSelect;
    Proxy source = makeSource(types, deadline);
    if (source == nullptr)
        return 0;
    if (!display_.reserveRequest(deadline)) {
        display_.destroySoon(std::move(source));
        return 0;
    }
    wl_proxy_marshal_flags(device_.get(),
                           isPrimary ? dataControl::deviceRequest::setPrimarySelection
                                     : dataControl::deviceRequest::setSelection,
                           nullptr, wl_proxy_get_version(device_.get()), 0, source.get());
    sources_.push_back({std::move(source), ++lastSource_});
    return isLost() ? 0 : lastSource_;
}

Proxy DataControlConnection::makeSource(const std::vector<std::string>& types, Clock::time_point deadline) {
    if (!display_.reserveRequest())
        return nullptr;
    const std::uint32_t version = wl_proxy_get_version(manager_.get());
    Proxy source(wl_proxy_marshal_flags(manager_.get(), dataControl::managerRequest::createDataSource,
                                        &interfaces_->source, version, 0, nullptr));
    if (source == nullptr)
        return nullptr;
    listen<&DataControlConnection::handleSource>(source.get(), *this);
    for (const std::string& type : types) {
        if (!canBeSent(type))
            continue;
        if (!display_.reserveRequest(deadline)) {
            display_.destroySoon(std::move(source));
            return nullptr;
        }
        wl_proxy_marshal_flags(source.get(), dataControl::sourceRequest::offer, nullptr, version, 0,
                               type.c_str());
    }
    return source;
}

void DataControlConnection::withdraw(std::uint64_t source) {
    const auto found = std::ranges::find(sources_, source, &Numbered::number);
    if (found == sources_.end())
        return;
    display_.destroySoon(std::move(found->proxy));
    sources_.erase(found);
}

bool DataControlConnection::receive(std::uint64_t offer, const std::string& type, int descriptor) {
    auto* const found = std::ranges::find(selections_, offer, &Numbered::number);
    if (found == selections_.end() || found->proxy == nullptr || !canBeSent(type) ||
        !display_.reserveRequest() || !canBeCopied(descriptor))
        return false;
    wl_proxy_marshal_flags(found->proxy.get(), dataControl::offerRequest::receive, nullptr,
                           wl_proxy_get_version(found->proxy.get()), 0, type.c_str(), descriptor);
    return !isLost();
}

std::uint64_t DataControlConnection::ask() {
    return sendQuestion(lastQuestion_ + 1) ? ++lastQuestion_ : 0;
}

bool DataControlConnection::sendQuestion(std::uint64_t number) {
    questions_.reserve(questions_.size() + 1);
    if (!display_.reserveRequest())
        return false;
    Proxy callback(reinterpret_cast<wl_proxy*>(wl_display_sync(display_.library())));
    if (callback == nullptr || isLost())
        return false;
    listen<&DataControlConnection::handleCallback>(callback.get(), *this);
    questions_.push_back({std::move(callback), number});
    return true;
}

void DataControlConnection::handleCallback(wl_proxy* callback, std::uint32_t /*event*/,
                                           const wl_argument* /*arguments*/) {
    const auto found = findProxy(questions_, callback);
    if (found == questions_.end() || isLost())
        return;
    const std::uint64_t number = found->number;
    questions_.erase(found);
    if (number == ownQuestion)
        isAnswered_ = true;
    else
        events_.answered(events_.receiver, number);
}

void DataControlConnection::handleSource(wl_proxy* source, std::uint32_t event,
                                         const wl_argument* arguments) {
    const bool isRequest = event == dataControl::sourceEvent::send;
    Descriptor output(isRequest ? arguments[1].h : -1);
    const auto found = findProxy(sources_, source);
    if (found == sources_.end() || isLost()) // withdrawn, but the compositor has not been told yet
        return;
    const std::uint64_t number = found->number;
    if (isRequest) {
        events_.requested(events_.receiver, number, arguments[0].s, output.release());
        return;
    }
    display_.destroySoon(std::move(found->proxy));
    sources_.erase(found);
    events_.cancelled(events_.receiver, number);
}

void DataControlConnection::handleDevice(wl_proxy* /*device*/, std::uint32_t event,
                                         const wl_argument* arguments) {
    // The object of an event is null, too, if it has been destroyed here meanwhile.
    const auto offer = [&] { return reinterpret_cast<wl_proxy*>(arguments[0].o); };
    switch (event) {
    case dataControl::deviceEvent::dataOffer:
        keepOffer(offer());
        break;
    case dataControl::deviceEvent::selection:
        handleSelection(WaylandSelectionKind::clipboard, offer());
        break;
    case dataControl::deviceEvent::primarySelection:
        handleSelection(WaylandSelectionKind::primary, offer());
        break;
    default: // finished
        display_.giveUp();
    }
}

/// The compositor tells the types next, and then which selection the offer is the content of. It is kept
/// until then: libwayland gives the connection up if an event names an offer that has been destroyed. Two,
/// one for each selection, are the most that are on their way.
void DataControlConnection::keepOffer(wl_proxy* offer) {
    listen<&DataControlConnection::handleOffer>(offer, *this);
    auto& [latest, older] = unclaimed_;
    if (latest.proxy != nullptr) {
        display_.destroySoon(std::move(older.proxy));
        older = std::move(latest);
    }
    latest = {Proxy(offer), {}};
}

void DataControlConnection::handleOffer(wl_proxy* offer, std::uint32_t /*event*/,
                                        const wl_argument* arguments) {
    auto* const found = findProxy(unclaimed_, offer);
    if (found != unclaimed_.end())
        found->types.add(arguments[0].s);
}

void DataControlConnection::handleSelection(WaylandSelectionKind kind, wl_proxy* offer) {
    Numbered& selection = selections_.at(static_cast<std::size_t>(kind));
    if (isLost() || (offer != nullptr && offer == selection.proxy.get()))
        return;
    display_.destroySoon(std::move(selection.proxy));
    selection.number = 0;
    std::vector<std::string> types;
    auto* const found = offer == nullptr ? unclaimed_.end() : findProxy(unclaimed_, offer);
    if (found != unclaimed_.end()) {
        selection = {std::move(found->proxy), ++lastOffer_};
        types = std::exchange(found->types, {}).take();
    }
    events_.selected(events_.receiver, kind, selection.number, std::move(types));
}

} // namespace tavel
