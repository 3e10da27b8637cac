#include "Tests/Wayland/CompositorOwner.h"

#include <sys/eventfd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace tavel {

namespace {

/// Longer than any successful test takes.
constexpr std::chrono::seconds timeOut{60};

} // namespace

/// What the compositor knows of one `take`. Its functions run on the compositor's thread.
class CompositorOwner::Source final : public SelectionSource {
public:
    Source(CompositorOwner& owner, Kind kind, std::vector<std::string> types)
        : owner_(owner), kind_(kind), types_(std::move(types)) {}

    const std::vector<std::string>& types() const override { return types_; }
    void send(const std::string& type, Descriptor writeEnd) override {
        owner_.receive(kind_, type, std::move(writeEnd));
    }
    void cancel() override { owner_.lose(*this); }

private:
    CompositorOwner& owner_;
    Kind kind_;
    std::vector<std::string> types_;
};

CompositorOwner::CompositorOwner(Compositor& compositor)
    : compositor_(compositor), end_(std::make_shared<const Descriptor>(eventfd(0, EFD_CLOEXEC))) {
    if (!*end_)
        throw std::system_error(errno, std::generic_category(), "eventfd");
    thread_ = std::thread([this] { serve(); });
}

CompositorOwner::~CompositorOwner() {
    disconnect();
    thread_.join();
}

void CompositorOwner::on(const std::string& type, Script script) {
    const std::lock_guard lock(mutex_);
    scripts_[type] = std::move(script);
}

void CompositorOwner::offer(std::vector<std::string> types) {
    const std::lock_guard lock(mutex_);
    offered_ = std::move(types);
}

void CompositorOwner::offerValue(const std::string& type, std::string bytes) {
    offer({type});
    on(type, value(std::move(bytes)));
}

void CompositorOwner::take(Kind kind) {
    std::shared_ptr<Source> source;
    {
        const std::lock_guard lock(mutex_);
        if (isEnding_)
            return;
        source = std::make_shared<Source>(*this, kind, offered_);
        sourceOf(kind) = source;
    }
    compositor_.select(kind, std::move(source));
}

void CompositorOwner::release(Kind kind) {
    std::shared_ptr<Source> source;
    {
        const std::lock_guard lock(mutex_);
        source = std::exchange(sourceOf(kind), nullptr);
    }
    if (source != nullptr)
        compositor_.drop(source);
}

bool CompositorOwner::owns(Kind kind) {
    const std::lock_guard lock(mutex_);
    return sourceOf(kind) != nullptr;
}

void CompositorOwner::disconnect() {
    std::vector<PastRequest> requests;
    {
        const std::lock_guard lock(mutex_);
        if (std::exchange(isEnding_, true))
            return;
        waiting_.clear();
        silent_.clear();
        requests = requests_;
    }
    changed_.notify_all();
    eventfd_write(end_->number(), 1);
    for (const PastRequest& request : requests) {
        if (const std::shared_ptr<OwnerTransfer> transfer = request.transfer.lock())
            transfer->close();
    }
    release(Kind::clipboard);
    release(Kind::primary);
}

CompositorOwner::Script CompositorOwner::silence() {
    return [this](const Request& request) {
        const std::lock_guard lock(mutex_);
        if (!isEnding_)
            silent_.push_back(request.transfer);
    };
}

CompositorOwner::Script CompositorOwner::value(std::string bytes) const {
    return [bytes = std::move(bytes)](const Request& request) {
        request.transfer->write(bytes);
        request.transfer->close();
    };
}

CompositorOwner::Script CompositorOwner::parts(std::vector<std::string> parts) const {
    return [parts = std::move(parts)](const Request& request) {
        for (const std::string& part : parts) {
            if (!request.transfer->awaitReading() || !request.transfer->write(part))
                break;
        }
        request.transfer->close();
    };
}

std::vector<std::string> CompositorOwner::requests() {
    std::vector<std::string> types;
    const std::lock_guard lock(mutex_);
    for (const PastRequest& request : requests_)
        types.push_back(request.type);
    return types;
}

std::size_t CompositorOwner::countOf(const std::string& type) {
    const std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(std::ranges::count(requests_, type, &PastRequest::type));
}

CompositorOwner::Request CompositorOwner::awaitRequest(const std::string& type, std::size_t number) {
    std::optional<Request> found;
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, timeOut, [&] {
        std::size_t count = 0;
        for (const PastRequest& request : requests_) {
            if (request.type == type && ++count == number)
                found = {request.kind, request.type, request.transfer.lock()};
        }
        return found.has_value();
    });
    if (!found)
        throw std::runtime_error("Nobody asks for " + type);
    return *found;
}

bool CompositorOwner::isEnding() {
    const std::lock_guard lock(mutex_);
    return isEnding_;
}

void CompositorOwner::receive(Kind kind, const std::string& type, Descriptor writeEnd) {
    const std::lock_guard lock(mutex_);
    if (isEnding_)
        return;
    auto transfer = std::make_shared<OwnerTransfer>(std::move(writeEnd), end_);
    requests_.push_back({kind, type, transfer});
    waiting_.push_back({kind, type, std::move(transfer)});
    changed_.notify_all();
}

void CompositorOwner::lose(const Source& source) {
    const std::lock_guard lock(mutex_);
    for (std::shared_ptr<Source>& one : sources_) {
        if (one.get() == &source)
            one.reset();
    }
}

void CompositorOwner::serve() {
    while (true) {
        std::optional<Request> request;
        {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [this] { return isEnding_ || !waiting_.empty(); });
            if (isEnding_)
                return;
            request = std::move(waiting_.front());
            waiting_.pop_front();
        }
        scriptFor(request->type)(*request);
    }
}

CompositorOwner::Script CompositorOwner::scriptFor(const std::string& type) {
    const std::lock_guard lock(mutex_);
    const auto found = scripts_.find(type);
    return found != scripts_.end() ? found->second
                                   : [](const Request& request) { request.transfer->close(); };
}

} // namespace tavel
