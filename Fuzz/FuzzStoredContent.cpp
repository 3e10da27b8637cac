#include "Fuzz/Fuzz.h"
#include "Linux/Store/ContentFile.h"

#include <cstring>

// The input is the length of a file's data, 8 bytes, and the table of the file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavel;
    std::uint64_t fileBytes = 0;
    if (size < sizeof fileBytes)
        return 0;
    std::memcpy(&fileBytes, data, sizeof fileBytes);
    const std::string_view table = inputText(data + sizeof fileBytes, size - sizeof fileBytes);
    constexpr std::uint64_t headerBytes = 24;
    fileBytes += headerBytes + table.size(); // may wrap round, as anything may stand in a damaged file

    const auto entries = parseContentTable(table, fileBytes);
    if (!entries)
        return 0;
    std::uint64_t end = headerBytes + table.size();
    std::uint32_t item = 0;
    for (const ContentFile::Entry& entry : *entries) {
        require(entry.offset == end && entry.size <= fileBytes - end && entry.item >= item);
        end += entry.size;
        item = entry.item;
    }
    require(end == fileBytes);
    return 0;
}
