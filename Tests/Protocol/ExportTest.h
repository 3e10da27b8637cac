#pragma once

#include "Tests/Protocol/AgentTest.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// A picture of the test fixture "pictures". Throws if it is missing.
std::string readPicture(std::string_view name);

/// The size of a PNG file in pixels, read by code that the agent does not use: "203x149".
std::string pngSize(const std::filesystem::path& file);

std::string contentOf(const std::filesystem::path& file);

/// The fixture of tests of exported files: one agent, and another program that copies.
class ExportTest : public AgentTest {
protected:
    using Paths = std::vector<std::filesystem::path>;

    AgentProcess& agent() {
        if (agent_ == nullptr)
            agent_ = &start();
        return *agent_;
    }

    std::int64_t copy(const std::vector<Representation>& item) {
        agent();
        return otherApplication().copy({item});
    }

    /// The files that the agent reports as `kind` for this copy.
    Paths exportOf(std::string_view kind, const std::vector<Representation>& item);

    /// Expects the announcement of this copy, this warning, and no other event.
    void expectWarning(const std::vector<Representation>& item, std::string_view message);

    /// Expects the announcement of this copy, and no other event.
    void expectAnnouncedOnly(const std::vector<Representation>& item);

    /// Expects no more events of the last copy, and the usual events of a new one.
    void expectNextCopyReported();

    std::filesystem::path exportDirectory() const { return exportDirectories().at(0); }

    static std::vector<std::string> namesOf(const Paths& paths);
    static std::vector<std::string> namesIn(const std::filesystem::path& directory);

private:
    AgentProcess* agent_ = nullptr;
};

} // namespace tavel
