#pragma once

#include "Tests/Selections/SelectionPeers.h"
#include "Tests/Wayland/Compositor.h"
#include "Tests/Wayland/WaylandProgram.h"

#include <memory>
#include <optional>

namespace tavel {

/// The target under which the program offers and prefers text.
inline constexpr auto plainTarget = "text/plain;charset=utf-8";

/// A compositor with the tested program on it. Owners and readers are played inside the compositor.
class WaylandPeers final : public SelectionPeers {
public:
    explicit WaylandPeers(const TransferTimeOuts& timeOuts, const Compositor::Options& options = {})
        : timeOuts_(timeOuts), compositor_(options), program_(compositor_.display(), timeOuts),
          board_(program_.open(std::nullopt)) {}

    Compositor& compositor() { return compositor_; }
    WaylandProgram& program() override { return program_; }
    Pasteboard& board() override { return *board_; }

    std::unique_ptr<OwnerPeer> makeOwner() override;
    std::unique_ptr<ReaderPeer> makeReader() override;
    std::unique_ptr<PasteboardProgram> makeProgram() override;
    void stopServer() override { compositor_.stop(); }
    bool tellsBreaksFromEnds() const override { return false; }

private:
    const TransferTimeOuts timeOuts_;
    Compositor compositor_;
    WaylandProgram program_;
    std::shared_ptr<Pasteboard> board_;
};

} // namespace tavel
