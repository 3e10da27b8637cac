#pragma once

#include "Platform/Platform.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace tavel {

/// Asks the user for the name of a file that is about to be pasted. Main thread only.
class FileNamePanel : public std::enable_shared_from_this<FileNamePanel> {
public:
    /// Gets the file's full name, or nullopt if the user cancelled. It may destroy the panel.
    using Finished = std::function<void(const std::optional<std::string>& name)>;

    /// Makes a panel in its place, not shown yet. The user can edit `stem`, but not the extension. `platform`
    /// must outlive the panel. Throws Error ("Tavel", 6) if no window can be shown here.
    static std::shared_ptr<FileNamePanel> make(Platform& platform, std::string_view stem,
                                               std::string_view ext);

    void setFinished(Finished finished) { finished_ = std::move(finished); }

    /// Shows the panel and sees to it that it gets the keyboard: a user who types the name sooner would type
    /// it into the file manager. If the system refuses the keyboard, the panel stays visible, and a click
    /// gives it the keyboard. A user who has gone to another program keeps it there.
    void show();
    void hide();

    /// Reports the name if it is valid and file systems can hold it. Otherwise the panel stays, with a hint.
    void confirmName();

    void cancelName();

private:
    FileNamePanel(Platform& platform, std::string_view ext) : platform_(platform), ext_(ext) {}

    void awaitKeyboard(int demands);
    void demandKeyboard(int demands);
    std::optional<std::int32_t> processInFront();
    bool hasUserGoneElsewhere();

    Platform& platform_;
    std::string ext_;
    std::unique_ptr<NamePanelView> view_;
    bool isShown_ = false;
    std::optional<std::int32_t> shownOver_; // the process in front when the panel was shown
    Finished finished_;
};

} // namespace tavel
