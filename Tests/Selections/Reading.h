#pragma once

#include "Tests/Selections/SelectionPeers.h"
#include "Tests/Support/ReadingLimits.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tavel {

inline constexpr auto plainText = "public.utf8-plain-text";

/// A gathering by the tested program, and what it has read at the end of it.
class Reading {
public:
    using Values = std::vector<std::optional<std::string>>;

    /// Begins to gather these types of the board.
    Reading(SelectionPeers& peers, Pasteboard& board, std::vector<std::string> types)
        : peers_(peers), board_(board), types_(std::move(types)) {
        std::vector<WantedValue> wanted;
        for (const std::string& type : types_)
            wanted.push_back({type, ample});
        peers_.program().run(
            [&] { gathering_ = board_.gather(wanted, [this](bool isCurrent) { end(isCurrent); }); });
    }

    Reading(SelectionPeers& peers, std::vector<std::string> types)
        : Reading(peers, peers.board(), std::move(types)) {}

    ~Reading() { cancel(); }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

    void cancel() {
        peers_.program().run([this] { gathering_.reset(); });
    }

    bool isOver() {
        bool isOver = false;
        peers_.program().run([&] { isOver = isCurrent_.has_value(); });
        return isOver;
    }

    /// The values that have come at the end. Throws std::runtime_error if the content was replaced.
    Values values() {
        if (!isCurrent())
            throw std::runtime_error("The content was replaced.");
        return values_;
    }

    /// Waits for the end. Whether the content was still the same then.
    bool isCurrent() {
        waitUntil([this] { return isOver(); }, atOnce);
        return *isCurrent_;
    }

private:
    void end(bool isCurrent) {
        EXPECT_FALSE(isCurrent_) << "A gathering has ended twice.";
        isCurrent_ = isCurrent;
        for (const std::string& type : types_) {
            const auto value = board_.data(type, ample);
            values_.push_back(value ? std::optional<std::string>(value->view()) : std::nullopt);
        }
    }

    SelectionPeers& peers_;
    Pasteboard& board_;
    std::vector<std::string> types_;
    std::unique_ptr<Gathering> gathering_;
    std::optional<bool> isCurrent_;
    Values values_;
};

/// Waits until the program has noticed the content with that change count.
inline void awaitNoticed(Pasteboard& board, std::int64_t changeCount) {
    waitUntil([&] { return board.noticedChangeCount() == changeCount; }, atOnce);
}

} // namespace tavel
