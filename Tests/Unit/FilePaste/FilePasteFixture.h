#pragma once

#include "TavelClipboardAgent/FilePaste/FilePaste.h"
#include "Tests/Unit/Doubles/TestPlatform.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// The feature, still switched off, on a desktop where it would take the shortcut: the file manager is in
/// front with its focus in a list, and the pasteboard holds a text.
class FilePasteFixture : public testing::Test {
protected:
    static constexpr std::int32_t fileManager = 501;
    static constexpr std::int64_t ownMark = 0x54415650;
    static constexpr std::uint64_t command = 0x100000;

    FilePasteFixture();

    ScriptedPasteboard& pasteboard() { return *platform.pasteboard; }

    void switchOn() { paste->configure(true); }
    void switchOff() { paste->configure(false); }

    /// Restores the focus that the test began with.
    void restoreFocus();

    KeyVerdict type(const KeyEvent& event) { return platform.tap.handler(event); }
    KeyVerdict press(std::int64_t key = 9) { return type({KeyEventType::keyDown, key, command, 0}); }
    KeyVerdict repeat() { return type({KeyEventType::keyDown, 9, command, 0, true}); }
    KeyVerdict timeOut() { return type({KeyEventType::tapDisabledByTimeout}); }
    KeyVerdict release(std::int64_t key = 9) { return type({KeyEventType::keyUp, key, command, 0}); }

    /// Types the shortcut. True if the feature took it.
    bool typeShortcut();

    void wait(std::chrono::milliseconds time) { platform.loop.advance(time); }

    /// Types the shortcut and waits for the panel.
    PanelWindow& openPanel();

    PanelWindow& panel() { return *platform.panels.back(); }

    /// Enters the stem in the panel and confirms.
    void confirm(std::string_view stem);

    /// Runs all steps: the shortcut, the panel, the name and the paste.
    void pasteAs(std::string_view stem);

    /// Copies this as another program does.
    void copy(PasteboardItem item);
    void copy(std::string_view type, std::string_view content);

    /// Releases the key, ends the interception, and starts again with the initial focus.
    void startOver();

    /// An event that ends an interception in progress.
    struct Change {
        std::string_view name;
        std::function<void()> make;
    };

    /// All ways in which the focus can leave the file manager's list.
    std::vector<Change> focusMoves();

    /// What the pasteboard's content becomes as a file. Throws Error.
    FileData fileData();

    bool isPanelOpen() const;

    /// The generated files that exist.
    std::vector<std::filesystem::path> files() const;

    /// The number of entries in the directory for generated files.
    std::size_t directoryCount() const;

    /// Whether there was no effect: no file, no paste, no call of `changed`, no log entry.
    bool nothingHappened() const;

    /// Whether exactly one failure was logged, with that domain and code.
    bool loggedFailure(std::string_view domainAndCode) const;

    static Representation representation(std::string_view type, std::string_view content);

    TestPlatform platform;
    std::filesystem::path root = platform.scratch / "exports";
    std::vector<std::int64_t> changes; // the arguments of `changed`
    std::shared_ptr<FilePaste> paste;
};

/// Domain and code of the error that `action` throws, as "Tavel 4"; empty if it throws none.
std::string errorOf(const std::function<void()>& action);

} // namespace tavel
