#pragma once

#include "Platform/Platform.h"
#include "Support/Bytes.h"
#include "Support/Error.h"
#include "Support/OwnerThread.h"
#include "TavelClipboardAgent/FilePaste/FileNamePanel.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tavel {

/// Pasting into the file manager: when it is on, the paste shortcut, typed in a view of files while the
/// pasteboard holds a picture, a PDF or text, asks for a file name, makes a file of the content, puts it on
/// the pasteboard beside the content, and pastes it. Main thread only. Held by a shared_ptr, because
/// everything that outlives a call holds it weakly.
class FilePaste : public std::enable_shared_from_this<FilePaste> {
public:
    /// What a file is made of.
    struct FileData {
        Bytes data;
        std::string ext; // without a dot
    };

    /// `root` is where generated files go. `changed` is told the change count that publishing one gave the
    /// pasteboard. `platform` must outlive this object. Nothing is tapped yet.
    FilePaste(Platform& platform, std::shared_ptr<Pasteboard> board, std::filesystem::path root,
              std::function<void(std::int64_t)> changed);

    /// Switches the feature on or off. Throws Error ("Tavel", 1), described for the user, when the system
    /// does not let the agent see the keyboard; the feature is then off. Switching off never fails, and ends
    /// what is going on.
    void configure(bool enabled);

    /// The content of the pasteboard as that of a file: the first of its representations that will do. Throws
    /// Error ("Tavel", 4) if none does, and ("Tavel", 3) if a picture cannot be encoded here. Can block like
    /// Pasteboard::data, and takes as long as encoding a picture does.
    FileData fileData();

    /// Ends an interception whose file has got a name: publishes the file, and pastes it if the keyboard
    /// focus is still in that process's view of files.
    void complete(std::int32_t pid, std::int64_t sequence, const Bytes& data, const std::string& name);

    /// Writes the file and adds it to the pasteboard's content. Gives its path, or nothing if the change
    /// count is not `sequence` any more. Throws Error: "Tavel" 5 for a name that is not valid, "Tavel" 2 if
    /// the pasteboard refuses, and FileError. What was written is then removed.
    std::optional<std::filesystem::path> publishGeneratedFile(std::int64_t sequence, const Bytes& data,
                                                              const std::string& name);

private:
    KeyVerdict handle(const KeyEvent& event);
    bool holdsPasteableContent();
    std::optional<std::int32_t> finderView();
    void begin(std::int32_t pid, std::int64_t sequence);
    void beginAfter(std::chrono::milliseconds delay, std::int32_t pid, std::int64_t sequence);
    void later(std::chrono::milliseconds delay, const std::function<void(FilePaste&)>& step);
    bool isPasteShortcutHeld();
    std::shared_ptr<FileNamePanel> makePanel(const FileData& content);
    void finish(const std::shared_ptr<FileNamePanel>& panel, std::int32_t pid, std::int64_t sequence,
                const Bytes& data, const std::optional<std::string>& name);
    std::optional<FileData> encodedImage();
    void keep(const std::filesystem::path& directory);
    void postPasteShortcut();
    void logFailure(const Error& error);

    [[no_unique_address]] OwnerThread owner_;
    Platform& platform_;
    std::shared_ptr<Pasteboard> board_;
    std::filesystem::path root_;
    std::function<void(std::int64_t)> changed_;
    bool enabled_ = false;
    bool tapCreated_ = false;
    std::int64_t generation_ = 0;           // moves when the feature is switched off
    bool busy_ = false;                     // from the key that was swallowed until the end of it all
    std::optional<std::int64_t> swallowed_; // the key whose repeats and release are still to be swallowed
    std::deque<std::filesystem::path> directories_; // of the generated files that are kept, oldest first
    std::shared_ptr<FileNamePanel> dialog_;         // while it is shown
};

} // namespace tavel
