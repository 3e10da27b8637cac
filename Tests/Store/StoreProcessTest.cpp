#include "Tests/Store/StoreProcessTest.h"

#include "Linux/Store/LmdbEnvironment.h"

#include <sys/stat.h>

namespace tavel {

namespace {

constexpr const char* pasteboardName = "shared";

} // namespace

std::unique_ptr<StorePasteboard> StoreProcessTest::open() const {
    return std::make_unique<StorePasteboard>(std::make_shared<const LmdbEnvironment>(storeDirectory_),
                                             pasteboardName);
}

std::unique_ptr<TestProcess> StoreProcessTest::start(const std::vector<std::string>& role) const {
    std::vector<std::string> commandLine{TAVEL_PASTEBOARD_WRITER, storeDirectory_, pasteboardName};
    commandLine.insert(commandLine.end(), role.begin(), role.end());
    return std::make_unique<TestProcess>(commandLine);
}

std::filesystem::path StoreProcessTest::storeFile() const {
    return storeDirectory_ / "pasteboards-1.mdb";
}

std::uint64_t StoreProcessTest::storeBytes() const {
    return std::filesystem::file_size(storeFile());
}

std::uint64_t StoreProcessTest::allocatedStoreBytes() const {
    struct stat status {};

    stat(storeFile().c_str(), &status);
    return static_cast<std::uint64_t>(status.st_blocks) * 512; // whatever the file system's block size is
}

} // namespace tavel
