#pragma once

#include "Platform/Platform.h"

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

    /// Makes a panel in its place, not shown yet. The user can edit `stem`, but not the extension. Throws
    /// Error
    /// ("Tavel", 6) if no window can be shown here.
    static std::shared_ptr<FileNamePanel> make(Platform& platform, std::string_view stem,
                                               std::string_view ext);

    void setFinished(Finished finished) { finished_ = std::move(finished); }

    void show() { view_->show(); }
    void hide() { view_->hide(); }

    /// Reports the name if it is valid and file systems can hold it. Otherwise the panel stays, with a hint.
    void confirmName();

    void cancelName();

private:
    explicit FileNamePanel(std::string_view ext) : ext_(ext) {}

    std::string ext_;
    std::unique_ptr<NamePanelView> view_;
    Finished finished_;
};

} // namespace tavel
