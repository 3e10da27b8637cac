#pragma once

#include "Tests/Support/TestDirectory.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// Directories and an environment for one test: programs that run in it share no pasteboard and no temporary
/// file with others. Removed with the object.
class World {
public:
    World();

    /// The working directory of the programs.
    const std::filesystem::path& directory() const { return directory_; }

    /// The directory for the programs' temporary files.
    std::filesystem::path temporaryDirectory() const { return root_.temporaryDirectory(); }

    /// The programs' environment, as "NAME=value".
    const std::vector<std::string>& environment() const { return environment_; }

    void setVariable(const std::string& name, const std::string& value);

    /// Returns the path of the file.
    std::string write(const std::string& name, std::string_view content) const;

    /// Writes an executable shell script and returns its path.
    std::string writeScript(const std::string& name, std::string_view lines) const;

private:
    TestDirectory root_;
    std::filesystem::path directory_;
    std::vector<std::string> environment_;
};

/// `size` bytes of every value, in an order that differs in each block of 256.
std::string allBytes(std::size_t size);

} // namespace tavel
