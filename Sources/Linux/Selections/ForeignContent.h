#pragma once

#include "Linux/Contents/SelectionText.h"
#include "Linux/Selections/OwnerQuestions.h"
#include "Linux/Selections/TransferTimeOuts.h"
#include "Platform/Pasteboard.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// A value as its owner sent it, and in the form of its type. File URLs stay the list that the owner sent.
struct GatheredValue {
    SelectionValue source;
    Bytes data;
};

/// Another program's content of one selection, as far as it has come: what is offered, and the values that
/// callers gather. One question at a time is under way, as some owners can serve no more. Waits for the
/// display server, but for no owner. One thread.
class ForeignContent {
public:
    using Clock = std::chrono::steady_clock;
    using Values = std::map<std::string, GatheredValue, std::less<>>;

    /// A content that is replaced before its targets are known is passed over, unless targets have been
    /// unknown for so long: a program that claims the selection again and again is noticed, too.
    static constexpr std::chrono::milliseconds longestUnnoticed{100};

    ForeignContent(std::unique_ptr<OwnerQuestions> questions, const TransferTimeOuts& timeOuts);

    /// From now on, the targets of each content are asked for, and these values with them. A program that is
    /// not interested should ask nobody: some owners fail when a requestor ends before the answer.
    void watch(const std::vector<WantedValue>& values) {
        valuesWithTargets_ = values;
        isWatched_ = true;
    }

    /// Another program has become the owner, and its content has that change count.
    void replace(std::int64_t changeCount, Clock::time_point now);

    /// This process has become the owner, and its content has that change count.
    void replaceByOwn(std::int64_t changeCount);

    /// The owner has gone, and its content with it.
    void vanish();

    /// The change count of the latest content whose targets are known; -1 before the first, and if nobody
    /// watches another program's.
    std::int64_t changeCount() const { return known_.changeCount; }

    /// The targets of that content. None, if it is this process's.
    const std::vector<std::string>& targets() const { return known_.targets; }

    /// The value under the type, if it came with the targets, or belongs to the gathering whose `done` is
    /// running; else null.
    const GatheredValue* value(std::string_view type) const;

    /// As Pasteboard says.
    std::unique_ptr<Gathering> gather(const std::vector<WantedValue>& wanted,
                                      const Pasteboard::Gathered& done);
    std::unique_ptr<Gathering> gatherForAddTypes(std::span<const std::string> required,
                                                 const Pasteboard::Gathered& done);

    /// Whether `done` of a gathering for adding types is running, and every required type has come.
    bool canAddTypes() const;

    /// Whether `proceed` has something to do now.
    bool hasWork() const;

    /// Takes in what has been decided, and asks for what comes next.
    void proceed(Clock::time_point now);

    /// The time at which a gathering has to end; nullopt if there is none.
    std::optional<Clock::time_point> nextDeadline() const;

    /// Runs what is to run when gatherings have ended. To be called where events may be dispatched.
    void runFinished();

private:
    struct Offer {
        std::int64_t changeCount = -1;
        std::vector<std::string> targets = {};
        Values values = {};
    };

    /// The value of one type on its way.
    struct Fetch {
        std::string type;
        std::size_t limit;
        std::vector<std::string> targets; // that give the type
        std::size_t asked = 0;            // of these
        std::optional<OwnerQuestions::Ticket> ticket = std::nullopt;
    };

    /// A content whose targets are not known yet.
    struct Unknown {
        std::int64_t changeCount;
        std::optional<OwnerQuestions::Ticket> ticket = std::nullopt; // of the targets
        std::optional<Offer> offer = std::nullopt;
        std::size_t values = 0; // of those that come with the targets
        std::optional<Fetch> fetch = std::nullopt;
    };

    struct Wish {
        WantedValue value;
        bool isPrivate = false; // only its owner knows the type
    };

    struct State {
        std::deque<Wish> wishes;
        Pasteboard::Gathered done; // empty: nobody waits for it any more
        Values values = {};
        std::optional<Fetch> fetch = std::nullopt;
        bool isCurrent = true;
        bool isForAddTypes = false;
        std::size_t room = Pasteboard::mostBytesTakenOver; // for adding types, all values together
        std::vector<std::string> required = {};            // for adding types
        std::optional<Clock::time_point> privateEnd = std::nullopt;
    };

    class Handle;

    std::unique_ptr<Gathering> start(std::shared_ptr<State> state);
    bool isThere(std::string_view type) const;
    Fetch fetchOf(const WantedValue& wanted, std::span<const std::string> targets) const;
    bool needsAttention(const Fetch& fetch) const;
    bool proceed(Fetch& fetch, Values& values);
    bool proceed(Unknown& unknown);
    bool proceed(State& state, Clock::time_point now);
    void giveUp(bool isCurrent);
    void end(std::optional<Fetch>& fetch);
    static std::optional<GatheredValue> valueOf(const Fetch& fetch, SelectionValue source);

    const std::unique_ptr<OwnerQuestions> questions_;
    const TransferTimeOuts::Duration privateTypesTimeOut_;
    bool isWatched_ = false;
    std::vector<WantedValue> valuesWithTargets_;
    Offer known_;
    std::optional<Unknown> unknown_;
    Clock::time_point unknownSince_;
    bool isSilent_ = false; // the owner was given up at a deadline, and is asked for nothing more
    std::list<std::shared_ptr<State>> active_; // the first one is under way
    std::list<std::shared_ptr<State>> finished_;
    std::shared_ptr<State> running_; // its `done` is running
};

} // namespace tavel
