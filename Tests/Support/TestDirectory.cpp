#include "Tests/Support/TestDirectory.h"

#include <sys/stat.h>

#include <cerrno>
#include <fstream>
#include <system_error>

namespace tavel {

namespace {

void createPrivate(const std::filesystem::path& directory) {
    if (mkdir(directory.c_str(), 0700) != 0)
        throw std::system_error(errno, std::generic_category(), directory.string());
}

} // namespace

TestDirectory::TestDirectory() {
    createPrivate(runtimeDirectory());
    createPrivate(temporaryDirectory());
}

std::map<std::string, std::optional<std::string>> TestDirectory::environment() const {
    return {{"XDG_RUNTIME_DIR", runtimeDirectory().string()},
            {"TMPDIR", temporaryDirectory().string()},
            {"DISPLAY", std::nullopt},
            {"WAYLAND_DISPLAY", std::nullopt}};
}

std::filesystem::path TestDirectory::createFile(const std::filesystem::path& name,
                                                const std::string& content) const {
    std::filesystem::path file = path() / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary);
    stream.exceptions(std::ios::failbit | std::ios::badbit);
    stream << content;
    stream.close();
    return file;
}

} // namespace tavel
