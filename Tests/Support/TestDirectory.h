#pragma once

#include "Tests/Unit/Fixtures/ScratchDirectory.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace tavel {

/// A fresh directory in which a test and the programs that it starts are on their own: it holds a runtime
/// directory, where their pasteboards live, and a directory for temporary files. Removed with this object.
class TestDirectory {
public:
    TestDirectory();

    /// Without links, so that a test may compare the paths that a program reports.
    const std::filesystem::path& path() const { return directory_.path(); }
    std::filesystem::path runtimeDirectory() const { return path() / "runtime"; }     // mode 0700
    std::filesystem::path temporaryDirectory() const { return path() / "temporary"; } // mode 0700

    /// Where the programs that get `environment` keep their pasteboards. It may not exist.
    std::filesystem::path pasteboardStore() const { return runtimeDirectory() / "tavel-pasteboard"; }

    /// What leads a program here, and away from the display of whoever runs the tests: XDG_RUNTIME_DIR,
    /// TMPDIR, and no DISPLAY or WAYLAND_DISPLAY.
    std::map<std::string, std::optional<std::string>> environment() const;

    /// Creates a file below `path` with that content, and the directories that lead to it.
    std::filesystem::path createFile(const std::filesystem::path& name,
                                     const std::string& content = {}) const;

private:
    ScratchDirectory directory_;
};

} // namespace tavel
