#include "Tests/Tools/World.h"

#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace tavel {

World::World() {
    std::string name = (std::filesystem::temp_directory_path() / "tavel-tool-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
        throw std::system_error(errno, std::generic_category(), name);
    root_ = std::filesystem::canonical(name);
    directory_ = root_ / "work";
    std::filesystem::create_directory(directory_);
    std::filesystem::create_directory(temporaryDirectory());
    const std::filesystem::path runtime = root_ / "run";
    if (mkdir(runtime.c_str(), 0700) != 0)
        throw std::system_error(errno, std::generic_category(), runtime.string());

    setVariable("XDG_RUNTIME_DIR", runtime.string());
    setVariable("TMPDIR", temporaryDirectory().string());
    setVariable("HOME", directory_.string());
    setVariable("PATH", "/usr/bin:/bin");
    // Every program gets the options of the sanitizers.
    for (const char* const option : {"ASAN_OPTIONS", "TSAN_OPTIONS"}) {
        if (const char* const value = std::getenv(option))
            setVariable(option, value);
    }
    setVariable("LC_ALL", "C.UTF-8");
    setVariable("TERM", "xterm");
}

World::~World() {
    std::error_code ignored; // a test that locks files has failed already
    std::filesystem::remove_all(root_, ignored);
}

void World::setVariable(const std::string& name, const std::string& value) {
    std::erase_if(environment_, [&](const std::string& one) { return one.starts_with(name + "="); });
    environment_.push_back(name + "=" + value);
}

std::string World::write(const std::string& name, std::string_view content) const {
    const std::filesystem::path path = directory_ / name;
    std::ofstream file(path, std::ios::binary);
    file << content;
    file.close();
    if (file.fail())
        throw std::runtime_error("cannot write " + path.string());
    return path.string();
}

std::string World::writeScript(const std::string& name, std::string_view lines) const {
    std::string path = write(name, "#!/bin/sh\n" + std::string(lines));
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path;
}

std::string allBytes(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>((i * 7 + i / 256) % 256);
    return bytes;
}

} // namespace tavel
