#include "Tests/Tools/World.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace tavel {

World::World() : directory_(root_.path() / "work") {
    std::filesystem::create_directory(directory_);

    setVariable("XDG_RUNTIME_DIR", root_.runtimeDirectory().string());
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
