#pragma once

#include <stdlib.h> // NOLINT(modernize-deprecated-headers): mkdtemp is not in the C++ header
#include <unistd.h> // and a Mac has it here

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace tavel {

/// A fresh directory that goes, with everything in it, when the test ends.
class ScratchDirectory {
public:
    ScratchDirectory() {
        std::string name = (std::filesystem::temp_directory_path() / "tavel-test-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("There is no room for a temporary directory");
        path_ = std::filesystem::canonical(name);
    }

    ~ScratchDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }

    std::filesystem::path operator/(const std::filesystem::path& name) const { return path_ / name; }

    /// Makes a file of that name and gives its path.
    std::filesystem::path makeFile(const std::filesystem::path& name,
                                   std::string_view content = "content") const {
        std::filesystem::path file = path_ / name;
        std::ofstream stream(file);
        stream << content;
        if (!stream.flush())
            throw std::runtime_error("A file cannot be made in the temporary directory");
        return file;
    }

private:
    std::filesystem::path path_;
};

} // namespace tavel
