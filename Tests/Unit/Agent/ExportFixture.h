#pragma once

#include "Platform/PasteboardTypes.h"
#include "TavelClipboardAgent/main/Limits.h"
#include "Tests/Unit/Agent/WorkerFixture.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// A worker whose exports run when the test says so.
class ExportFixture : public WorkerFixture {
protected:
    using Events = std::vector<Json>;
    using Names = std::vector<std::string>;

    ExportFixture();

    void copy(std::vector<Representation> item);
    void copyPng(std::string_view content) { copy({representation(pasteboardType::png, content)}); }

    /// The names in the export directory, sorted.
    Names exported() const { return namesIn(worker->exportDirectory()); }

    static Names namesIn(const std::filesystem::path& directory);
    static std::string contentOf(const std::filesystem::path& file);
    static void writeFile(const std::filesystem::path& file, std::string_view content);

    /// The paths in the one event. Expects that kind.
    static std::vector<std::string> pathsIn(const Events& events, std::string_view kind);

    bool isExportHeld() const { return platform.loop.heldBackgroundJobs() > 0; }
};

} // namespace tavel
