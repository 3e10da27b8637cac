// hostile-owner MODE: owns CLIPBOARD on the X server of DISPLAY and treats each requestor as MODE says, until
// its input ends:
//
//     silent          answers nothing
//     targets         answers TARGETS, and nothing else
//     drip            sends a text in increments of one byte, ten a second
//     stall           stops half-way of a text of 4 MiB in increments
//     die             loses its connection during a text in increments, and starts again 100 ms later
//     flood           claims the selection 2,000 times a second, and answers
//     large           sends a picture of 512 MiB in increments, as fast as it is taken
//     serve BYTES     answers promptly, with a text of that size
//
// "serve" claims the selection for each line of the input, and prints "claimed NANOSECONDS", the monotonic
// time just before. The other modes claim it at the start, and again when a value has been taken, when nobody
// has taken anything for longer than a patient requestor waits, and when a claim is old. They print "reached"
// when a requestor has got into the situation for the first time, and at the end what happened.

#include "bench/SelectionOwner.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr auto patience = 2300ms;  // the agent waits for two seconds
constexpr auto longestClaim = 21s; // and never longer than twenty for one content
constexpr auto timeDead = 100ms;
constexpr auto dripInterval = 100ms;
constexpr int floodPerSecond = 2000;
constexpr std::size_t incrementBytes = std::size_t{256} << 10; // as toolkits send them
constexpr std::size_t largeIncrementBytes = std::size_t{1} << 20;
constexpr std::size_t bytesBeforeDeath = 4 * incrementBytes;

enum class Mode { silent, targets, drip, stall, die, flood, large, serve };

struct Behaviour {
    std::string_view name;
    Mode mode;
    std::size_t valueBytes;
    std::vector<std::string_view> offered;
};

const std::array<Behaviour, 8> behaviours{{
    {"silent", Mode::silent, 0, {}},
    {"targets", Mode::targets, 0, {"text/html", "image/png", "UTF8_STRING"}},
    {"drip", Mode::drip, std::size_t{1} << 20, {"UTF8_STRING"}},
    {"stall", Mode::stall, std::size_t{4} << 20, {"UTF8_STRING"}},
    {"die", Mode::die, std::size_t{4} << 20, {"UTF8_STRING"}},
    {"flood", Mode::flood, 5, {"UTF8_STRING"}},
    {"large", Mode::large, std::size_t{512} << 20, {"image/png"}},
    {"serve", Mode::serve, 0, {"UTF8_STRING"}},
}};

struct Counts {
    std::uint64_t claims = 0;
    std::uint64_t targets = 0; // requests for TARGETS
    std::uint64_t values = 0;  // requests for anything else
    std::uint64_t bytes = 0;   // sent in values
    std::uint64_t whole = 0;   // values sent to their end
    std::uint64_t deaths = 0;
};

class HostileOwner {
public:
    explicit HostileOwner(const Behaviour& behaviour)
        : mode_(behaviour.mode), names_(behaviour.offered), valueBytes_(behaviour.valueBytes),
          increment_(mode_ == Mode::large ? largeIncrementBytes : incrementBytes, 'v') {
        connect();
    }

    void setValueBytes(std::size_t bytes) { valueBytes_ = bytes; }

    /// Returns at the end of the input.
    void run() {
        if (mode_ != Mode::serve)
            claim();
        do {
            while (handleEvent()) {
            }
            act();
            if (owner_)
                owner_->flush();
        } while (wait());
        report();
    }

private:
    using Place = SelectionOwner::Place;

    struct Transfer {
        xcb_atom_t type;
        std::size_t sent = 0;
        bool isEnding = false; // the empty increment is in the property
        std::optional<Clock::time_point> due = std::nullopt;
    };

    void connect() {
        owner_.emplace();
        targetsAtom_ = owner_->atom("TARGETS");
        offered_.clear();
        for (const std::string_view name : names_)
            offered_.push_back(owner_->atom(name));
    }

    Clock::time_point claim() {
        transfers_.clear();
        ++counts_.claims;
        claimedAt_ = owner_->claim();
        lastActivity_ = claimedAt_;
        return claimedAt_;
    }

    void reached() {
        if (!std::exchange(hasReached_, true))
            say("reached");
    }

    static void say(const std::string& line) {
        std::printf("%s\n", line.c_str());
        std::fflush(stdout);
    }

    /// False if no event is there.
    bool handleEvent() {
        const auto event = owner_ ? owner_->nextEvent() : nullptr;
        if (event == nullptr)
            return false;
        const int kind = event->response_type & 0x7F;
        if (kind == XCB_SELECTION_REQUEST)
            handleRequest(reinterpret_cast<const xcb_selection_request_event_t&>(*event));
        else if (kind == XCB_PROPERTY_NOTIFY)
            handleChange(reinterpret_cast<const xcb_property_notify_event_t&>(*event));
        return true;
    }

    void handleRequest(const xcb_selection_request_event_t& request) {
        lastActivity_ = Clock::now();
        if (request.target != targetsAtom_) {
            ++counts_.values;
            sendValue(request);
            return;
        }
        ++counts_.targets;
        if (mode_ != Mode::silent)
            owner_->answerTargets(request, offered_);
        if (mode_ == Mode::silent || mode_ == Mode::flood)
            reached();
    }

    void sendValue(const xcb_selection_request_event_t& request) {
        if (mode_ == Mode::targets || mode_ == Mode::silent) {
            reached();
            return;
        }
        if (valueBytes_ <= increment_.size()) {
            owner_->put(SelectionOwner::placeOf(request), request.target,
                        std::string_view(increment_).substr(0, valueBytes_));
            owner_->notify(request);
            counts_.bytes += valueBytes_;
            ++counts_.whole;
        } else {
            transfers_[SelectionOwner::placeOf(request)] = {request.target};
            owner_->announceIncrements(request);
        }
    }

    void handleChange(const xcb_property_notify_event_t& change) {
        const auto found = transfers_.find({change.window, change.atom});
        if (found == transfers_.end() || change.state != XCB_PROPERTY_DELETE)
            return;
        lastActivity_ = Clock::now();
        Transfer& transfer = found->second;
        if (transfer.isEnding) {
            transfers_.erase(found);
            ++counts_.whole;
            if (mode_ == Mode::large)
                claim();
        } else if (mode_ == Mode::drip) {
            transfer.due = lastActivity_ + dripInterval;
        } else if (mode_ == Mode::stall && transfer.sent >= valueBytes_ / 2) {
            reached();
        } else if (mode_ == Mode::die && transfer.sent >= bytesBeforeDeath) {
            die();
        } else {
            sendIncrement(found->first, transfer, increment_.size());
        }
    }

    void sendIncrement(const Place& place, Transfer& transfer, std::size_t bytes) {
        const std::size_t size = std::min(bytes, valueBytes_ - transfer.sent);
        owner_->put(place, transfer.type, std::string_view(increment_).substr(0, size));
        transfer.sent += size;
        transfer.isEnding = size == 0;
        counts_.bytes += size;
        if (mode_ == Mode::drip || mode_ == Mode::large)
            reached();
    }

    /// The server sees the connection close, as when the system ends a program.
    void die() {
        transfers_.clear();
        owner_.reset();
        diedAt_ = Clock::now();
        ++counts_.deaths;
        reached();
    }

    /// Does what has become due.
    void act() {
        const auto now = Clock::now();
        if (mode_ == Mode::flood) {
            const auto due = static_cast<std::uint64_t>(
                floodPerSecond * std::chrono::duration<double>(now - startedAt_).count());
            while (counts_.claims < due)
                claim();
        } else if (!owner_ && now >= diedAt_ + timeDead) {
            connect();
            claim();
        } else if (owner_ && mode_ != Mode::serve && now >= nextClaim()) {
            claim();
        }
        for (auto& [place, transfer] : transfers_) {
            if (transfer.due && *transfer.due <= now) {
                transfer.due.reset();
                sendIncrement(place, transfer, 1);
            }
        }
    }

    Clock::time_point nextClaim() const {
        return std::min(lastActivity_ + patience, claimedAt_ + longestClaim);
    }

    Clock::time_point nextAction() const {
        if (mode_ == Mode::flood)
            return Clock::now() + 1s / floodPerSecond;
        Clock::time_point next = owner_ ? nextClaim() : diedAt_ + timeDead;
        if (mode_ == Mode::serve)
            next = Clock::now() + 1h;
        for (const auto& [place, transfer] : transfers_)
            next = std::min(next, transfer.due.value_or(next));
        return next;
    }

    /// Waits for events, for input and for what becomes due. False at the end of the input or of the server.
    bool wait() {
        std::array<pollfd, 2> sources{{{STDIN_FILENO, POLLIN, 0}, {-1, POLLIN, 0}}};
        if (owner_) {
            if (owner_->isLost())
                return false;
            sources[1].fd = owner_->descriptor();
            if (handleEvent()) // xcb may have received it while it sent
                return true;
        }
        const auto time = std::max<std::chrono::nanoseconds>(nextAction() - Clock::now(), 0ns);
        const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
        const timespec longest{seconds.count(), (time - seconds).count()};
        if (ppoll(sources.data(), sources.size(), &longest, nullptr) < 0)
            return false;
        return sources[0].revents == 0 || takeInput();
    }

    bool takeInput() {
        std::array<char, 64> input{};
        const ssize_t size = read(STDIN_FILENO, input.data(), input.size());
        for (ssize_t i = 0; i < size; ++i) {
            if (mode_ != Mode::serve || input[static_cast<std::size_t>(i)] != '\n')
                continue;
            const auto time = std::chrono::nanoseconds(claim().time_since_epoch());
            say("claimed " + std::to_string(time.count()));
        }
        return size > 0;
    }

    void report() const {
        const std::chrono::duration<double> time = Clock::now() - startedAt_;
        std::printf(
            "seconds %.3f claims %llu targets %llu values %llu bytes %llu whole %llu deaths %llu\n",
            time.count(), static_cast<unsigned long long>(counts_.claims),
            static_cast<unsigned long long>(counts_.targets), static_cast<unsigned long long>(counts_.values),
            static_cast<unsigned long long>(counts_.bytes), static_cast<unsigned long long>(counts_.whole),
            static_cast<unsigned long long>(counts_.deaths));
    }

    Mode mode_;
    std::vector<std::string_view> names_;
    std::size_t valueBytes_;
    std::string increment_;
    std::optional<SelectionOwner> owner_; // empty while the program is dead
    xcb_atom_t targetsAtom_ = XCB_ATOM_NONE;
    std::vector<xcb_atom_t> offered_;
    std::map<Place, Transfer> transfers_;
    Clock::time_point startedAt_ = Clock::now();
    Clock::time_point claimedAt_;
    Clock::time_point lastActivity_;
    Clock::time_point diedAt_;
    bool hasReached_ = false;
    Counts counts_;
};

} // namespace
} // namespace tavel

int main(int argc, char** argv) {
    const std::string_view name = argc > 1 ? argv[1] : "";
    const auto* const behaviour = std::ranges::find(tavel::behaviours, name, &tavel::Behaviour::name);
    const bool serves = name == "serve";
    if (behaviour == tavel::behaviours.end() || argc != (serves ? 3 : 2))
        return EXIT_FAILURE;
    std::signal(SIGPIPE, SIG_IGN); // the parent or the server may have gone
    try {
        tavel::HostileOwner owner(*behaviour);
        if (serves)
            owner.setValueBytes(std::stoul(argv[2]));
        owner.run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
