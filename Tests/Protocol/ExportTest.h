#pragma once

#include "Tests/Protocol/AgentTest.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// A picture that the tests' encoders made. Throws if it is not there.
std::string readPicture(std::string_view name);

/// The size in pixels that an independent reader of its header finds in a PNG file: "203x149".
std::string pngSize(const std::filesystem::path& file);

std::string contentOf(const std::filesystem::path& file);

/// What the tests of exported files start from: one agent, and another program that copies.
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

    /// What comes after the announcement of this copy has to be this warning alone.
    void expectWarning(const std::vector<Representation>& item, std::string_view message);

    /// Nothing may come but the announcement of this copy.
    void expectAnnouncedOnly(const std::vector<Representation>& item);

    /// Nothing more may come of what was copied, and the next copy is reported as ever.
    void expectNextCopyReported();

    std::filesystem::path exportDirectory() const { return exportDirectories().at(0); }

    static std::vector<std::string> namesOf(const Paths& paths);
    static std::vector<std::string> namesIn(const std::filesystem::path& directory);

private:
    AgentProcess* agent_ = nullptr;
};

} // namespace tavel
