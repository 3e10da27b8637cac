#include "Tests/Wayland/DataControlGlobal.h"

#include "Tests/Wayland/Resource.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tavel {

namespace {

// The protocols' numbers of errors.
constexpr std::uint32_t usedSource = 1;   // of a device
constexpr std::uint32_t invalidOffer = 1; // of a source

/// After so many types, a client's socket may be full.
constexpr std::size_t typesAtOnce = 16;

using Kind = WaylandSelectionKind;

/// A client's source. Its object may be gone while somebody still asks for the content.
class ClientSource final : public SelectionSource {
public:
    explicit ClientSource(Selections& selections) : selections_(selections) {}

    void attach(wl_resource* resource) { resource_ = resource; }
    void detach() {
        resource_ = nullptr;
        selections_.drop(*this);
    }

    void add(std::string type) { types_.push_back(std::move(type)); }

    /// False if it was used before.
    bool use() { return !std::exchange(isUsed_, true); }
    bool isUsed() const { return isUsed_; }

    const std::vector<std::string>& types() const override { return types_; }

    void send(const std::string& type, Descriptor writeEnd) override {
        if (resource_ != nullptr)
            wl_resource_post_event(resource_, dataControl::sourceEvent::send, type.c_str(),
                                   writeEnd.number());
    }

    void cancel() override {
        if (resource_ != nullptr)
            wl_resource_post_event(resource_, dataControl::sourceEvent::cancelled);
    }

private:
    Selections& selections_;
    wl_resource* resource_ = nullptr;
    std::vector<std::string> types_;
    bool isUsed_ = false;
};

/// What a source's object owns.
struct SourceObject {
    explicit SourceObject(Selections& selections) : source(std::make_shared<ClientSource>(selections)) {}
    ~SourceObject() { source->detach(); }
    SourceObject(const SourceObject&) = delete;
    SourceObject& operator=(const SourceObject&) = delete;

    std::shared_ptr<ClientSource> source;
};

struct SourceRequests {
    void (*offer)(wl_client*, wl_resource*, const char*);
    void (*destroy)(wl_client*, wl_resource*);
};

void offerType(wl_client*, wl_resource* resource, const char* type) {
    ClientSource& source = *dataOf<SourceObject>(resource).source;
    if (source.isUsed())
        wl_resource_post_error(resource, invalidOffer, "The source has been used already.");
    else
        source.add(type);
}

constexpr SourceRequests sourceRequests{offerType, destroyResource};

/// What an offer's object owns.
struct Offer {
    Selections* selections;
    std::weak_ptr<SelectionSource> source;
};

struct OfferRequests {
    void (*receive)(wl_client*, wl_resource*, const char*, std::int32_t);
    void (*destroy)(wl_client*, wl_resource*);
};

/// An offer that another one has replaced is void: the descriptor is closed.
void receive(wl_client*, wl_resource* resource, const char* type, std::int32_t descriptor) {
    Descriptor writeEnd(descriptor);
    const Offer& offer = dataOf<Offer>(resource);
    const std::shared_ptr<SelectionSource> source = offer.source.lock();
    if (source != nullptr && offer.selections->isSelected(*source))
        source->send(type, std::move(writeEnd));
}

constexpr OfferRequests offerRequests{receive, destroyResource};

class ClientDevice final : public SelectionDevice {
public:
    explicit ClientDevice(const DataControlGlobal& global) : global_(global) {}
    ~ClientDevice() override { global_.selections().remove(*this); }
    ClientDevice(const ClientDevice&) = delete;
    ClientDevice& operator=(const ClientDevice&) = delete;

    void attach(wl_resource* resource) {
        resource_ = resource;
        global_.selections().add(*this);
    }

    void select(Kind kind, wl_resource* sourceResource) {
        if (isFinished_ || !knows(kind))
            return;
        std::shared_ptr<ClientSource> source;
        if (sourceResource != nullptr) {
            source = dataOf<SourceObject>(sourceResource).source;
            if (!source->use()) {
                wl_resource_post_error(resource_, usedSource, "The source has been used already.");
                return;
            }
        }
        global_.selections().select(kind, std::move(source), wl_resource_get_client(resource_));
    }

    void tell(Kind kind, const std::shared_ptr<SelectionSource>& source) override {
        if (!knows(kind))
            return;
        wl_resource* const offer = source != nullptr ? makeOffer(source) : nullptr;
        wl_resource_post_event(resource_,
                               kind == Kind::clipboard ? dataControl::deviceEvent::selection
                                                       : dataControl::deviceEvent::primarySelection,
                               offer);
    }

    void finish() override {
        isFinished_ = true;
        wl_resource_post_event(resource_, dataControl::deviceEvent::finished);
    }

    bool belongsTo(const void* client) const override { return wl_resource_get_client(resource_) == client; }

private:
    bool knows(Kind kind) const {
        return kind == Kind::clipboard || global_.hasPrimary(wl_resource_get_version(resource_));
    }

    wl_resource* makeOffer(const std::shared_ptr<SelectionSource>& source) {
        wl_client* const client = wl_resource_get_client(resource_);
        wl_resource* const offer =
            makeResource(client, global_.interfaces().offer, wl_resource_get_version(resource_), 0,
                         &offerRequests, std::make_unique<Offer>(&global_.selections(), source));
        if (offer == nullptr)
            return nullptr;
        wl_resource_post_event(resource_, dataControl::deviceEvent::dataOffer, offer);
        std::size_t number = 0;
        for (const std::string& type : source->types()) {
            if (++number % typesAtOnce == 0)
                global_.awaitRoom(client);
            wl_resource_post_event(offer, dataControl::offerEvent::offer, type.c_str());
        }
        return offer;
    }

    const DataControlGlobal& global_;
    wl_resource* resource_ = nullptr;
    bool isFinished_ = false;
};

struct DeviceRequests {
    void (*setSelection)(wl_client*, wl_resource*, wl_resource*);
    void (*destroy)(wl_client*, wl_resource*);
    void (*setPrimarySelection)(wl_client*, wl_resource*, wl_resource*);
};

template <Kind kind>
void setSelection(wl_client*, wl_resource* resource, wl_resource* source) {
    dataOf<ClientDevice>(resource).select(kind, source);
}

constexpr DeviceRequests deviceRequests{setSelection<Kind::clipboard>, destroyResource,
                                        setSelection<Kind::primary>};

/// What a manager's object owns.
struct Manager {
    DataControlGlobal* global;
};

struct ManagerRequests {
    void (*createDataSource)(wl_client*, wl_resource*, std::uint32_t);
    void (*getDataDevice)(wl_client*, wl_resource*, std::uint32_t, wl_resource*);
    void (*destroy)(wl_client*, wl_resource*);
};

void createDataSource(wl_client* client, wl_resource* manager, std::uint32_t number) {
    const DataControlGlobal& global = *dataOf<Manager>(manager).global;
    wl_resource* const resource =
        makeResource(client, global.interfaces().source, wl_resource_get_version(manager), number,
                     &sourceRequests, std::make_unique<SourceObject>(global.selections()));
    if (resource != nullptr)
        dataOf<SourceObject>(resource).source->attach(resource);
}

void getDataDevice(wl_client* client, wl_resource* manager, std::uint32_t number, wl_resource*) {
    const DataControlGlobal& global = *dataOf<Manager>(manager).global;
    wl_resource* const resource =
        makeResource(client, global.interfaces().device, wl_resource_get_version(manager), number,
                     &deviceRequests, std::make_unique<ClientDevice>(global));
    if (resource != nullptr)
        dataOf<ClientDevice>(resource).attach(resource);
}

constexpr ManagerRequests managerRequests{createDataSource, getDataDevice, destroyResource};

} // namespace

DataControlGlobal::Protocol DataControlGlobal::ext() {
    return {&extDataControl(), 1, 1};
}

DataControlGlobal::Protocol DataControlGlobal::wlr(int version) {
    return {&wlrDataControl(), version, 2};
}

DataControlGlobal::DataControlGlobal(wl_display* display, const Protocol& protocol, Selections& selections,
                                     bool hasPrimary, AwaitRoom awaitRoom)
    : protocol_(protocol), selections_(selections), hasPrimary_(hasPrimary),
      awaitRoom_(std::move(awaitRoom)) {
    if (wl_global_create(display, &interfaces().manager, protocol.version, this, bind) == nullptr)
        throw std::runtime_error("The compositor cannot offer data control.");
}

void DataControlGlobal::bind(wl_client* client, void* global, std::uint32_t version, std::uint32_t number) {
    DataControlGlobal& self = *static_cast<DataControlGlobal*>(global);
    makeResource(client, self.interfaces().manager, static_cast<int>(version), number, &managerRequests,
                 std::make_unique<Manager>(&self));
}

} // namespace tavel
