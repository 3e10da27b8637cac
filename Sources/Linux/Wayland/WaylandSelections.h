#pragma once

#include "Linux/Base/ReadyDescriptors.h"
#include "Linux/Selections/DisplaySelections.h"
#include "Linux/Wayland/PipeReader.h"
#include "Linux/Wayland/PipeServer.h"
#include "Linux/Wayland/WaylandConnection.h"
#include "Linux/Wayland/WaylandSelection.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// The selections that a compositor with data control passes on. Waits for the compositor, for some seconds
/// at most, and for no other program. One thread.
class WaylandSelections final : public DisplaySelections {
public:
    /// The name of the pasteboard that is the primary selection.
    static constexpr std::string_view primaryName = "PRIMARY";

    /// Connects as WaylandConnection::open says; null if it cannot.
    static std::shared_ptr<WaylandSelections>
    open(const std::string& display, const std::filesystem::path& module, const WaylandConnection::Log& log,
         const TransferTimeOuts& timeOuts, std::string* refusal = nullptr);

    WaylandSelections(const WaylandSelections&) = delete;
    WaylandSelections& operator=(const WaylandSelections&) = delete;
    ~WaylandSelections() override = default;

    WaylandConnection& connection() { return *connection_; }

    /// Whether there is a selection for the pasteboard of that name.
    bool has(const std::optional<std::string>& pasteboardName) const;

    Selection& selection(const std::optional<std::string>& pasteboardName) override;
    void synchronize() override;
    bool isLost() const override { return connection_->isLost(); }
    bool isServing() const override;
    int descriptor() const override { return descriptors_.descriptor(); }
    void flush() override;
    bool hasWork() const override;
    std::optional<Clock::time_point> nextDeadline() const override;
    void dispatch() override;

    /// Dispatches what comes until the compositor has carried out all requests from before. False if it has
    /// not within some seconds.
    bool awaitRequests();

    /// Whether the compositor has answered that question of the connection.
    bool isAnswered(std::uint64_t question) const { return lastAnswer_ >= question; }

private:
    static constexpr std::size_t kinds = 2;

    explicit WaylandSelections(const TransferTimeOuts& timeOuts);

    DataControlEvents events();
    void begin(std::unique_ptr<WaylandConnection> connection);
    void selected(WaylandSelectionKind kind, std::uint64_t offer, std::vector<std::string> types);
    void requested(std::uint64_t source, std::string_view type, int descriptor);
    void cancelled(std::uint64_t source);
    void answered(std::uint64_t question);
    std::shared_ptr<const OwnedContent> contentOf(std::uint64_t source) const;

    const TransferTimeOuts timeOuts_;
    ReadyDescriptors descriptors_;
    std::array<WaylandOffer, kinds> beginnings_; // until there are selections
    std::unique_ptr<WaylandConnection> connection_;
    std::optional<PipeReader> reader_;
    PipeServer server_;
    std::vector<std::unique_ptr<WaylandSelection>> selections_; // by kind
    std::uint64_t lastAnswer_ = 0;
    bool takesRequests_ = true;
};

} // namespace tavel
