#include "Tests/Wayland/Compositor.h"

#include "Tests/Wayland/Seat.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace tavel {

namespace {

/// Longer than any successful test takes, in milliseconds.
constexpr int timeOut = 60'000;

Descriptor makeEvent() {
    Descriptor event(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!event)
        throw std::system_error(errno, std::generic_category(), "eventfd");
    return event;
}

void signalEvent(const Descriptor& event) {
    const std::uint64_t one = 1;
    if (write(event.number(), &one, sizeof one) < 0 && errno != EAGAIN) // which is signalled already
        throw std::system_error(errno, std::generic_category(), "eventfd");
}

} // namespace

std::string readToEnd(const Descriptor& readEnd) {
    std::string content;
    std::vector<char> buffer(std::size_t{64} * 1024);
    while (true) {
        pollfd readable{readEnd.number(), POLLIN, 0};
        if (poll(&readable, 1, timeOut) == 0)
            throw std::runtime_error("The content does not end.");
        const ssize_t count = ::read(readEnd.number(), buffer.data(), buffer.size());
        if (count == 0)
            return content;
        if (count > 0)
            content.append(buffer.data(), static_cast<std::size_t>(count));
        else if (errno != EINTR && errno != EAGAIN)
            throw std::system_error(errno, std::generic_category(), "read");
    }
}

void Compositor::DisplayDestroyer::operator()(wl_display* display) const {
    wl_display_destroy_clients(display);
    wl_display_destroy(display);
}

Compositor::Compositor(const Options& options)
    : display_(directory_ / "wayland"), wakeUp_(makeEvent()), stop_(makeEvent()), selections_(options),
      wayland_(wl_display_create()) {
    if (wayland_ == nullptr)
        throw std::runtime_error("The compositor has no display.");
    offerGlobals(options);
    if (wl_display_add_socket(wayland_.get(), display_.c_str()) != 0)
        throw std::runtime_error("The compositor cannot listen at " + display_);
    thread_ = std::thread([this] { serve(); });
}

Compositor::~Compositor() {
    stop();
}

void Compositor::offerGlobals(const Options& options) {
    if (options.hasSeat)
        offerSeat(wayland_.get());
    const auto offer = [&](const DataControlGlobal::Protocol& protocol) {
        globals_.push_back(
            std::make_unique<DataControlGlobal>(wayland_.get(), protocol, selections_, options.hasPrimary,
                                                [this](wl_client* client) { awaitRoom(client); }));
    };
    if (options.offersExt)
        offer(DataControlGlobal::ext());
    if (options.offersWlr)
        offer(DataControlGlobal::wlr(options.hasPrimary ? 2 : 1));
}

void Compositor::stop() {
    const std::lock_guard stopping(stopping_);
    if (!thread_.joinable())
        return;
    {
        const std::lock_guard lock(mutex_);
        isStopping_ = true;
    }
    signalEvent(stop_);
    wake();
    thread_.join();
}

void Compositor::hang() {
    run([this] { isHanging_ = true; });
}

void Compositor::goOn() {
    run([this] { isHanging_ = false; });
}

void Compositor::finishDevices() {
    run([this] { selections_.finishDevices(); });
}

std::optional<std::vector<std::string>> Compositor::typesOf(Kind kind) {
    std::optional<std::vector<std::string>> types;
    run([&] {
        if (const auto& source = selections_.source(kind))
            types = source->types();
    });
    return types;
}

std::size_t Compositor::changesOf(Kind kind) {
    std::size_t changes = 0;
    run([&] { changes = selections_.changesOf(kind); });
    return changes;
}

std::size_t Compositor::clientCount() {
    std::size_t count = 0;
    run([&] {
        count = static_cast<std::size_t>(wl_list_length(wl_display_get_client_list(wayland_.get())));
    });
    return count;
}

std::size_t Compositor::deviceCount() {
    std::size_t count = 0;
    run([&] { count = selections_.deviceCount(); });
    return count;
}

Descriptor Compositor::read(Kind kind, const std::string& type) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe2");
    Descriptor readEnd(ends[0]);
    read(kind, type, Descriptor(ends[1]));
    return readEnd;
}

void Compositor::read(Kind kind, const std::string& type, Descriptor writeEnd) {
    run([&] {
        if (const auto& source = selections_.source(kind))
            source->send(type, std::move(writeEnd));
    });
}

void Compositor::select(Kind kind, std::shared_ptr<SelectionSource> source) {
    run([this, kind, source = std::move(source)] { selections_.select(kind, source); });
}

void Compositor::drop(const std::shared_ptr<SelectionSource>& source) {
    run([this, source] { selections_.drop(*source); });
}

/// What `work` refers to must live until it has run, or if it tells of a selection, belong to it: its telling
/// may go on when this returns.
void Compositor::run(std::function<void()> work) {
    std::future<void> done;
    {
        const std::lock_guard lock(mutex_);
        if (hasEnded_)
            return;
        jobs_.push_back({std::move(work), {}});
        done = jobs_.back().done.get_future();
    }
    wake();
    done.wait();
}

void Compositor::wake() const {
    signalEvent(wakeUp_);
}

void Compositor::serve() {
    wl_event_loop* const events = wl_display_get_event_loop(wayland_.get());
    while (!isStopping()) {
        if (!isHanging_)
            wl_display_flush_clients(wayland_.get());
        std::array<pollfd, 2> readable{
            {{wakeUp_.number(), POLLIN, 0}, {wl_event_loop_get_fd(events), POLLIN, 0}}};
        poll(readable.data(), isHanging_ ? 1 : 2, -1);

        std::uint64_t count = 0;
        std::deque<Job> jobs;
        if (::read(wakeUp_.number(), &count, sizeof count) > 0) {
            const std::lock_guard lock(mutex_);
            jobs.swap(jobs_);
        }
        for (Job& job : jobs)
            carryOut(std::move(job));
        if (!isHanging_ && readable[1].revents != 0)
            wl_event_loop_dispatch(events, 0);
    }
    end();
}

void Compositor::carryOut(Job job) {
    job_ = std::move(job.done);
    job.work();
    if (!isHanging_)
        wl_display_flush_clients(wayland_.get());
    completeJob();
}

void Compositor::completeJob() {
    if (job_)
        job_->set_value();
    job_.reset();
}

bool Compositor::isStopping() {
    const std::lock_guard lock(mutex_);
    return isStopping_;
}

/// libwayland disconnects a client whose socket is full. Whoever waits for the job may be the one who reads
/// from that socket, so the job counts as done.
void Compositor::awaitRoom(wl_client* client) {
    wl_client_flush(client);
    std::array<pollfd, 2> ready{{{wl_client_get_fd(client), POLLOUT, 0}, {stop_.number(), POLLIN, 0}}};
    if (poll(ready.data(), ready.size(), 0) > 0)
        return;
    completeJob();
    poll(ready.data(), ready.size(), timeOut);
}

void Compositor::end() {
    selections_.end();
    wayland_.reset();
    const std::lock_guard lock(mutex_);
    hasEnded_ = true;
    for (Job& job : jobs_)
        job.done.set_value();
    jobs_.clear();
}

} // namespace tavel
