// Runs a fuzzer's entry on every file of the given directories, without libFuzzer. Prints each name first, so
// that the last name before a crash is that of the offending file.

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

/// The buffer is exactly as large as the content, so that a sanitizer detects reads beyond it.
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
            std::cout << file.filename().string() << std::endl; // flushed before a possible crash
            if (!runOver(file)) {
                std::cerr << "The file cannot be read, or the entry failed.\n";
                return 1;
            }
            ++runs;
        }
    }
    if (runs == 0)
        std::cerr << "There are no files to run.\n";
    return runs == 0 ? 1 : 0;
}
