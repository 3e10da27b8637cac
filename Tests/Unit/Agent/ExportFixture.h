#pragma once

#include "Platform/PasteboardTypes.h"
#include "TavelClipboardAgent/main/Limits.h"
#include "Tests/Unit/Agent/WorkerFixture.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// A worker whose exports the test lets run when it wants to.
class ExportFixture : public WorkerFixture {
protected:
    using Events = std::vector<Json>;
    using Names = std::vector<std::string>;

    ExportFixture() {
        makeWorker();
        std::filesystem::create_directories(worker->exportDirectory());
    }

    void copy(std::vector<Representation> item) { pasteboard().changeFromOutside({std::move(item)}); }

    void copyPng(std::string_view content) { copy({representation(pasteboardType::png, content)}); }

    /// What lies in the export directory, sorted.
    Names exported() const { return namesIn(worker->exportDirectory()); }

    static Names namesIn(const std::filesystem::path& directory) {
        Names names;
        for (const auto& entry : std::filesystem::directory_iterator(directory))
            names.push_back(entry.path().filename().string());
        std::ranges::sort(names);
        return names;
    }

    static std::string contentOf(const std::filesystem::path& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    static std::filesystem::perms permissionsOf(const std::filesystem::path& path) {
        return std::filesystem::status(path).permissions();
    }

    /// The paths in the one event, which has to be of that kind.
    static std::vector<std::string> pathsIn(const Events& events, std::string_view kind) {
        EXPECT_EQ(events.size(), 1U);
        if (events.size() != 1 || events.front().value("kind", "") != kind)
            throw std::runtime_error("There is no such event");
        return events.front().at("paths").get<std::vector<std::string>>();
    }

    bool isExportHeld() const { return platform.loop.heldBackgroundJobs() > 0; }
};

} // namespace tavel
