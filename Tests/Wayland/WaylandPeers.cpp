#include "Tests/Wayland/WaylandPeers.h"

#include "Tests/Wayland/CompositorOwner.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace tavel {

namespace {

class WaylandOwner final : public OwnerPeer {
public:
    explicit WaylandOwner(Compositor& compositor) : owner_(compositor) {}

    void offer(const std::vector<std::string>& targets) override { owner_.offer(targets); }
    void give(const std::string& target, std::string bytes) override {
        owner_.on(target, owner_.value(std::move(bytes)));
    }
    void giveParts(const std::string& target, std::vector<std::string> parts) override {
        owner_.on(target, owner_.parts(std::move(parts)));
    }
    void stopAfter(const std::string& target, const std::string& beginning,
                   std::function<void()> action) override {
        owner_.on(target, [this, beginning, action = std::move(action)](const auto& request) {
            owner_.silence()(request);
            if (!beginning.empty() && request.transfer->write(beginning))
                request.transfer->awaitReading();
            action();
        });
    }
    void answerLate(const std::string& target, std::string bytes) override {
        if (const auto transfer = owner_.awaitRequest(target).transfer) {
            transfer->write(bytes);
            transfer->close();
        }
    }
    void take() override { owner_.take(); }
    void release() override { owner_.release(); }
    void disconnect() override { owner_.disconnect(); }
    std::vector<std::string> requests() override { return owner_.requests(); }
    void awaitRequest(const std::string& target, std::size_t number) override {
        static_cast<void>(owner_.awaitRequest(target, number));
    }

private:
    CompositorOwner owner_;
};

class WaylandReader final : public ReaderPeer {
public:
    explicit WaylandReader(Compositor& compositor) : compositor_(compositor) {}

    void ask(const std::string& target) override {
        pipe_.reset(compositor_.read(Compositor::Kind::clipboard, target).release());
    }
    void askOnly(const std::string& target) override { ask(target); }
    std::string takePart() override {
        constexpr int timeOut = 60'000; // milliseconds
        pollfd readable{pipe_.number(), POLLIN, 0};
        if (poll(&readable, 1, timeOut) == 0)
            throw std::runtime_error("The value does not go on.");
        std::string part(std::size_t{64} * 1024, '\0');
        const ssize_t size = ::read(pipe_.number(), part.data(), part.size());
        if (size < 0)
            throw std::system_error(errno, std::generic_category(), "read");
        part.resize(static_cast<std::size_t>(size));
        return part;
    }
    /// A pipe holds what its owner wrote before it was closed. One that goes on is filled again.
    bool isGivenUp() override {
        const auto capacity = static_cast<std::size_t>(fcntl(pipe_.number(), F_GETPIPE_SZ));
        for (std::size_t taken = 0; taken <= capacity;) {
            const std::string part = takePart();
            if (part.empty())
                return true;
            taken += part.size();
        }
        return false;
    }
    void disconnect() override { pipe_.reset(); }

private:
    Compositor& compositor_;
    Descriptor pipe_;
};

} // namespace

std::unique_ptr<OwnerPeer> WaylandPeers::makeOwner() {
    return std::make_unique<WaylandOwner>(compositor_);
}

std::unique_ptr<ReaderPeer> WaylandPeers::makeReader() {
    return std::make_unique<WaylandReader>(compositor_);
}

std::unique_ptr<PasteboardProgram> WaylandPeers::makeProgram() {
    return std::make_unique<WaylandProgram>(compositor_.display(), timeOuts_);
}

} // namespace tavel
