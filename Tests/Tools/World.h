#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// A place of its own for one test: the programs that run in it share no pasteboard and no temporary file
/// with anything outside. Goes with the object.
class World {
public:
    World();
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    /// Where programs are started, so what their relative paths begin at.
    const std::filesystem::path& directory() const { return directory_; }

    /// Where programs make their temporary files.
    std::filesystem::path temporaryDirectory() const { return root_ / "tmp"; }

    /// The environment of the programs, as "NAME=value".
    const std::vector<std::string>& environment() const { return environment_; }

    void setVariable(const std::string& name, const std::string& value);

    /// Gives the path of the file.
    std::string write(const std::string& name, std::string_view content) const;

    /// Writes an executable script for the shell and gives its path.
    std::string writeScript(const std::string& name, std::string_view lines) const;

private:
    std::filesystem::path root_;
    std::filesystem::path directory_;
    std::vector<std::string> environment_;
};

/// Every value that a byte can have, several times over, in an order that no line ending divides evenly.
std::string allBytes(std::size_t size);

} // namespace tavel
