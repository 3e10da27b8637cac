#include "Fuzz/Fuzz.h"
#include "Linux/Store/ContentFile.h"
#include "Support/Files.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <string>

namespace tavel {
namespace {

constexpr std::size_t limit = 1000;

void check(const ContentFile& content, std::size_t fileBytes) {
    std::uint32_t item = 0;
    std::uint64_t total = 0;
    for (const ContentFile::Entry& entry : content.entries()) {
        require(entry.item >= item);
        item = entry.item;
        total += entry.type.size() + entry.size;
        require(entry.offset + entry.size <= fileBytes);
        const auto data = content.data(entry, limit);
        require(data && data->size() == std::min<std::size_t>(entry.size, limit + 1));
    }
    require(total <= fileBytes);
}

} // namespace
} // namespace tavel

/// Reads the input as the file of a pasteboard's content.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavel;
    const int descriptor = memfd_create("content", MFD_CLOEXEC);
    require(descriptor >= 0 && writeAll(descriptor, inputText(data, size)));
    if (const auto content = ContentFile::read(descriptor))
        check(*content, size);
    return 0;
}
