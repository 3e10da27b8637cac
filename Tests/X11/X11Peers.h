#pragma once

#include "Tests/Selections/SelectionPeers.h"
#include "Tests/Support/XServer.h"
#include "Tests/X11/X11Program.h"

#include <memory>
#include <optional>
#include <string>

namespace tavel {

/// An X server with the tested program on it. The test's other clients are its peers.
class X11Peers final : public SelectionPeers {
public:
    explicit X11Peers(const TransferTimeOuts& timeOuts)
        : timeOuts_(timeOuts), program_(server_.display(), timeOuts), board_(program_.open(std::nullopt)) {}

    XServer& server() { return server_; }
    X11Program& program() override { return program_; }
    Pasteboard& board() override { return *board_; }
    const std::string& display() const { return server_.display(); }

    std::unique_ptr<OwnerPeer> makeOwner() override;
    std::unique_ptr<ReaderPeer> makeReader() override;
    std::unique_ptr<PasteboardProgram> makeProgram() override;
    void stopServer() override { server_.stop(); }
    bool tellsBreaksFromEnds() const override { return true; }

private:
    const TransferTimeOuts timeOuts_;
    XServer server_;
    X11Program program_;
    std::shared_ptr<Pasteboard> board_;
};

} // namespace tavel
