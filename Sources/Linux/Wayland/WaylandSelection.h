#pragma once

#include "Linux/Selections/Selection.h"
#include "Linux/Wayland/DataControlModule.h"
#include "Linux/Wayland/PipeReader.h"
#include "Linux/Wayland/WaylandOwnerQuestions.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace tavel {

class WaylandSelections;

/// One selection that a compositor passes on. The compositor tells every program of a new content with the
/// same words, its owner included. Ours is known by its place among the events: it comes after the requests
/// that made it, and another program's content comes only after the news that our source was cancelled.
class WaylandSelection final : public Selection {
public:
    /// The other objects must outlive this one. The beginning is the content that was there before this
    /// process.
    WaylandSelection(WaylandSelections& selections, WaylandSelectionKind kind, PipeReader& reader,
                     WaylandOffer beginning, const TransferTimeOuts& timeOuts);

    void synchronize() override;
    bool isLost() const override;
    std::optional<std::int64_t> own(OwnedContent content) override;

    /// The compositor tells of a new content, which may be ours.
    void selected(WaylandOffer offer);

    /// The compositor has taken the selection from that source.
    void cancelled(std::uint64_t source);

    /// The compositor has carried out all requests up to this question.
    void answered(std::uint64_t question);

    /// What a source of ours offers; null if there is no such source of this selection.
    std::shared_ptr<const OwnedContent> contentOf(std::uint64_t source) const;

private:
    WaylandSelection(WaylandSelections& selections, WaylandSelectionKind kind, PipeReader& reader,
                     const std::shared_ptr<WaylandOffer>& offer, const TransferTimeOuts& timeOuts);

    using Types = std::unordered_set<std::string>;

    /// A source that was withdrawn before the compositor had answered. It may still be told of.
    struct Withdrawn {
        Types types;
        std::uint64_t questionBefore;
        std::uint64_t questionAfter;
    };

    static bool isOffer(const WaylandOffer& offer, const Types& types);
    void withdraw();
    bool isWithdrawn(const WaylandOffer& offer);
    void becomeOwner();

    WaylandSelections& selections_;
    const WaylandSelectionKind kind_;
    const std::shared_ptr<WaylandOffer> offer_;

    /// Those that were not cancelled. A reader may still ask for the content before ours.
    std::map<std::uint64_t, std::shared_ptr<const OwnedContent>> sources_;

    std::uint64_t source_ = 0; // the one that has the selection, or is about to get it; 0 without one
    std::uint64_t questionBeforeSource_ = 0; // a content before its answer has the same types by chance
    Types sourceTypes_;
    std::optional<std::int64_t> sourceCount_; // the change count with which it got it; nullopt before
    std::vector<Withdrawn> withdrawn_;        // oldest first
};

} // namespace tavel
