#include "Tests/X11/X11Peers.h"

#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/ScriptedRequestor.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

namespace tavel {

namespace {

class X11Owner final : public OwnerPeer {
public:
    explicit X11Owner(const std::string& display) : owner_(display) {}

    void offer(const std::vector<std::string>& targets) override { owner_.offer(targets); }
    void give(const std::string& target, std::string bytes) override {
        owner_.on(target, owner_.value(target, std::move(bytes)));
    }
    void giveParts(const std::string& target, std::vector<std::string> parts) override {
        owner_.on(target, owner_.increments(target, std::move(parts)));
    }
    void stopAfter(const std::string& target, const std::string& beginning,
                   std::function<void()> action) override {
        owner_.on(target, [this, target, beginning, action = std::move(action)](const auto& request) {
            if (!beginning.empty()) {
                owner_.announce(request, 1);
                owner_.awaitDeletion(request);
                owner_.put(request, target, beginning);
                owner_.awaitDeletion(request);
            }
            action();
        });
    }
    void answerLate(const std::string& target, std::string bytes) override {
        const auto request = owner_.awaitRequest(target);
        owner_.value(target, std::move(bytes))(request);
        if (!owner_.awaitDeletion(request))
            throw std::runtime_error("The late answer was left in its property.");
    }
    void take() override { owner_.take(); }
    void release() override { owner_.release(); }
    void disconnect() override { owner_.disconnect(); }

    std::vector<std::string> requests() override {
        owner_.atom("ROUND_TRIP"); // what the server has sent before is counted
        std::vector<std::string> targets;
        for (const auto& request : owner_.requests()) {
            if (request.targetName != "TARGETS")
                targets.push_back(request.targetName);
        }
        return targets;
    }
    void awaitRequest(const std::string& target, std::size_t number) override {
        static_cast<void>(owner_.awaitRequest(target, number));
    }

private:
    ScriptedOwner owner_;
};

/// Expects each part to have the form of the target, and nothing to be left of a transfer.
class X11Reader final : public ReaderPeer {
public:
    explicit X11Reader(X11Peers& peers) : peers_(peers), requestor_(peers.display()) {}

    void ask(const std::string& target) override {
        target_ = target;
        if (!requestor_.convert(target))
            throw std::runtime_error("Refused: " + target);
        state_ = State::answered;
    }
    void askOnly(const std::string& target) override {
        requestor_.ask(target);
        requestor_.atom("ROUND_TRIP");
    }
    std::string takePart() override {
        if (state_ == State::ended)
            return {};
        if (std::exchange(state_, State::increments) == State::answered) {
            const auto property = requestor_.takeProperty();
            if (property.type != "INCR") {
                state_ = State::ended;
                return property.bytes;
            }
        }
        if (!requestor_.awaitProperty())
            throw std::runtime_error("The value does not go on.");
        auto part = requestor_.takeProperty();
        EXPECT_EQ(part.type, target_);
        if (part.bytes.empty())
            expectEnd();
        return std::move(part.bytes);
    }
    bool isGivenUp() override {
        requestor_.takeProperty();
        peers_.settle();
        return !requestor_.property().exists();
    }
    void disconnect() override { requestor_.disconnect(); }

private:
    enum class State { answered, increments, ended };

    void expectEnd() {
        state_ = State::ended;
        peers_.settle();
        EXPECT_FALSE(requestor_.property().exists());
        EXPECT_EQ(requestor_.errorCount(), 0);
    }

    X11Peers& peers_;
    ScriptedRequestor requestor_;
    std::string target_;
    State state_ = State::ended;
};

} // namespace

std::unique_ptr<OwnerPeer> X11Peers::makeOwner() {
    return std::make_unique<X11Owner>(display());
}

std::unique_ptr<ReaderPeer> X11Peers::makeReader() {
    return std::make_unique<X11Reader>(*this);
}

std::unique_ptr<PasteboardProgram> X11Peers::makeProgram() {
    return std::make_unique<X11Program>(display(), timeOuts_);
}

} // namespace tavel
