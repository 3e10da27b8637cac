// Runs a fuzzer's entry over every file of the directories that are named, with any compiler. Each file is
// named first, so that a crash tells which one it was.

#include "Fuzz/Fuzz.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <span>
#include <system_error>
#include <vector>

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesIn(const fs::path& directory) {
    std::error_code error;
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(directory, error))
        files.push_back(entry.path());
    std::ranges::sort(files);
    return files;
}

/// The buffer ends where the content ends, so that a sanitizer sees a read behind it.
bool runOver(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary | std::ios::ate);
    const std::streamoff size = stream.tellg();
    if (size < 0)
        return false;
    const auto content = std::make_unique<std::uint8_t[]>(static_cast<std::size_t>(size));
    stream.seekg(0);
    stream.read(reinterpret_cast<char*>(content.get()), size);
    return stream.good() && LLVMFuzzerTestOneInput(content.get(), static_cast<std::size_t>(size)) == 0;
}

} // namespace

int main(int argumentCount, char* arguments[]) {
    std::size_t runs = 0;
    for (const char* const directory :
         std::span(arguments, static_cast<std::size_t>(argumentCount)).subspan(1)) {
        for (const fs::path& file : filesIn(directory)) {
            std::cout << file.filename().string() << std::endl; // flushed before what may crash
            if (!runOver(file)) {
                std::cerr << "It cannot be read, or was not taken.\n";
                return 1;
            }
            ++runs;
        }
    }
    if (runs == 0)
        std::cerr << "There is no file to run over.\n";
    return runs == 0 ? 1 : 0;
}
