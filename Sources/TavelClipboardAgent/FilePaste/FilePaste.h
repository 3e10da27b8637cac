#pragma once

#include "Platform/Platform.h"
#include "Support/Bytes.h"
#include "Support/Error.h"
#include "Support/OwnerThread.h"
#include "TavelClipboardAgent/FilePaste/FileDataSearch.h"
#include "TavelClipboardAgent/FilePaste/FileNamePanel.h"
#include "TavelClipboardAgent/main/ExportDirectory.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tavel {

/// Pastes content into a file manager as a file. While the feature is on, it swallows the paste shortcut in a
/// view of files if the pasteboard holds content that can become a file. It asks for the file's name in the
/// naming panel, writes the file, adds it to the pasteboard beside the content, and types the shortcut anew.
/// Main thread only. Held by a shared_ptr; whatever outlives a call holds it weakly.
class FilePaste : public std::enable_shared_from_this<FilePaste> {
public:
    /// Generated files go below `root`. At the end of each publication, when older files are gone, `changed`
    /// gets the change count that it produced; it must not throw. `platform` must outlive this object. The
    /// keyboard is not tapped before `configure`.
    FilePaste(Platform& platform, std::shared_ptr<Pasteboard> board, std::shared_ptr<ExportDirectory> root,
              std::function<void(std::int64_t)> changed);

    /// Switches the feature on or off. Switching off ends an interception that is in progress, and never
    /// fails. Switching on throws Error ("Tavel", 1), with a description for the user, if the system does not
    /// let the agent see the keyboard, or cannot show the naming panel; the feature is then off. It also goes
    /// off by itself, within about a second, when the user takes that permission away, and has to be switched
    /// on again.
    void configure(bool enabled);

    /// The value that marks the file URL beside it as that of a generated file. To be watched on the
    /// pasteboard, because the key handler cannot wait for it.
    static WantedValue generatedFileMark() { return {std::string(alternative), alternativeValue.size()}; }

    /// Ends an interception after the user chose a name: gathers what the content's owner keeps of it, if
    /// anything, publishes the file, and pastes it if the keyboard focus is still in a view of files of the
    /// process `pid`.
    void complete(std::int32_t pid, std::int64_t sequence, const Bytes& data, const std::string& name);

    /// Writes the file and adds it to the pasteboard's content. Returns its path, or nullopt if the change
    /// count is no longer `sequence`. Throws Error: ("Tavel", 5) for an invalid name, ("Tavel", 2) if the
    /// pasteboard refuses the file, and FileError. The file is removed unless its path is
    /// returned.
    std::optional<std::filesystem::path> publishGeneratedFile(std::int64_t sequence, const Bytes& data,
                                                              const std::string& name);

private:
    /// The pasteboard type whose value marks the file URL beside it as that of a generated file.
    static constexpr std::string_view alternative = "com.brennic.generated-file";
    static constexpr std::string_view alternativeValue = "1";

    /// The user data of the key events that the agent posts: "TAVP".
    static constexpr std::int64_t tag = 0x54415650;

    /// How often to check whether the shortcut has been released.
    static constexpr std::chrono::milliseconds keyCheckInterval{80};

    void switchOn();
    void switchOff();
    void createTap();
    void removeTap();
    void losePermission();
    void scheduleNextCheck();
    void checkPermission();
    KeyVerdict handleOrPass(const KeyEvent& event);
    KeyVerdict handle(const KeyEvent& event);
    void handleDisabledTap(bool verdictWasLate);
    void endInterception();
    void passUntilReleased();
    bool holdsPasteableContent(std::int64_t sequence);
    bool holdsGeneratedFile(std::span<const std::string> types, std::int64_t sequence);
    std::optional<std::int32_t> processOfFocusedFileView();
    void begin(std::int32_t pid, std::int64_t sequence);
    void scheduleBegin(std::chrono::milliseconds delay, std::int32_t pid, std::int64_t sequence);
    void schedule(std::chrono::milliseconds delay, const std::function<void(FilePaste&)>& step);
    bool isPasteShortcutHeld();
    bool canGoOn(std::int32_t pid, std::int64_t sequence);
    void askForName(std::int32_t pid, std::int64_t sequence, FileDataSearch::Outcome outcome);
    void showPanel(std::int32_t pid, std::int64_t sequence, const FileData& content);
    std::shared_ptr<FileNamePanel> makePanel(const FileData& content);
    void finish(const std::shared_ptr<FileNamePanel>& panel, std::int32_t pid, std::int64_t sequence,
                const Bytes& data, const std::optional<std::string>& name);
    void publishAndPaste(std::int32_t pid, std::int64_t sequence, const Bytes& data, const std::string& name,
                         bool isCurrent);
    void retain(PrivateDirectory directory);
    void postPasteShortcut();
    void logFailure(const Error& error);

    [[no_unique_address]] OwnerThread owner_;
    Platform& platform_;
    std::shared_ptr<Pasteboard> board_;
    std::shared_ptr<ExportDirectory> root_;
    std::function<void(std::int64_t)> changed_;
    bool enabled_ = false;
    bool tapCreated_ = false;
    bool checkIsScheduled_ = false;            // of the permission
    std::int64_t generation_ = 0;              // counts how often interceptions were ended from outside
    bool busy_ = false;                        // an interception is in progress; the shortcut passes
    bool hasJustIntercepted_ = false;          // the tap has reported nothing since
    std::optional<std::int64_t> published_;    // change count of the last generated file
    std::optional<std::int64_t> swallowed_;    // key code whose repeats and release are still to be swallowed
    std::deque<PrivateDirectory> directories_; // of the retained generated files, oldest first
    std::shared_ptr<FileDataSearch> search_;   // while it waits for the content's owner
    std::unique_ptr<Gathering> gathering_;     // of what the publication takes over
    std::shared_ptr<FileNamePanel> panel_;     // while it is shown
};

} // namespace tavel
