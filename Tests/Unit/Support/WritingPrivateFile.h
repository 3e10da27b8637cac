#pragma once

#include "Support/FileError.h"
#include "Support/PrivateDirectory.h"

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>

namespace tavel {

/// One of the two functions that write a private file.
struct Writer {
    std::string_view name;
    void (PrivateDirectory::*function)(const std::string& name, std::string_view content) const;

    void write(const std::filesystem::path& path, std::string_view content) const {
        (PrivateDirectory::open(path.parent_path()).*function)(path.filename().string(), content);
    }
};

inline constexpr Writer directWriter{"directly", &PrivateDirectory::writeFile};
inline constexpr Writer atomicWriter{"atomically", &PrivateDirectory::writeFileAtomically};
inline constexpr Writer writers[] = {directWriter, atomicWriter};

/// The errno with which writing fails; 0 if it succeeds.
inline int writingCode(const Writer& writer, const std::filesystem::path& path, std::string_view content) {
    try {
        writer.write(path, content);
        return 0;
    } catch (const FileError& error) {
        return error.code();
    }
}

inline std::string readBack(const std::filesystem::path& path) {
    std::ostringstream content;
    content << std::ifstream(path).rdbuf();
    return content.str();
}

/// The number of entries in the directory. Shows a partial file that was left behind.
inline std::ptrdiff_t countEntries(const std::filesystem::path& directory) {
    return std::distance(std::filesystem::directory_iterator(directory), {});
}

} // namespace tavel
