#include "Tests/Store/StoreProcessTest.h"

#include "Linux/Store/PasteboardStore.h"

#include <sys/stat.h>

namespace tavel {

namespace {

constexpr const char* pasteboardName = "shared";

} // namespace

std::unique_ptr<StorePasteboard> StoreProcessTest::open() const {
    return std::make_unique<StorePasteboard>(std::make_shared<const PasteboardStore>(storeDirectory_),
                                             pasteboardName);
}

std::unique_ptr<TestProcess> StoreProcessTest::start(const std::vector<std::string>& role) const {
    std::vector<std::string> commandLine{TAVEL_PASTEBOARD_WRITER, storeDirectory_, pasteboardName};
    commandLine.insert(commandLine.end(), role.begin(), role.end());
    return std::make_unique<TestProcess>(commandLine);
}

std::uint64_t StoreProcessTest::storeBytes() const {
    std::uint64_t blocks = 0;
    for (const auto& entry : std::filesystem::directory_iterator(storeDirectory_)) {
        struct stat status {};
        if (stat(entry.path().c_str(), &status) == 0)
            blocks += static_cast<std::uint64_t>(status.st_blocks);
    }
    return blocks * 512; // whatever the file system's block size is
}

} // namespace tavel
