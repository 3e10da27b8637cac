#include "ImageHeaders/ImageFields.h"
#include "ImageHeaders/ImageHeader.h"
#include "Linux/Images/Module/HostileFiles.h"

namespace tavel {
namespace {

enum class Compression : std::uint64_t { none = 0, runs8 = 1, runs4 = 2, masks = 3 };

/// Whether run-length encoded pixels reach the mark that ends them.
bool reachesEnd(const ImageFields& fields, std::uint64_t offset, bool hasHalfBytes) {
    for (;;) {
        const auto count = fields.number(offset, 1);
        const auto code = fields.number(offset + 1, 1);
        if (!count || !code)
            return false;
        offset += 2;
        if (*count != 0)
            continue; // a run of the colour `code`
        if (*code == 1)
            return true;
        if (*code == 2)
            offset += 2; // a move to the right and up
        else if (*code != 0) {
            const std::uint64_t size = hasHalfBytes ? (*code + 1) / 2 : *code;
            offset += size + (size & 1); // colours one by one, up to an even place
        }
    }
}

} // namespace

std::optional<Bytes> completeBmp(const Bytes& file) {
    constexpr std::uint64_t coreHeader = 12;
    const auto header = readImageHeader(file.view());
    const ImageFields fields(file.view(), ByteOrder::littleEndian);
    const bool isCore = fields.number(14, 4) == coreHeader;
    const std::uint64_t depth = fields.numberOrZero(isCore ? 24 : 28, 2);
    const auto compression = isCore ? Compression::none : Compression{fields.numberOrZero(30, 4)};
    const std::uint64_t pixels = fields.numberOrZero(10, 4);
    // GDK-PixBuf takes memory for as many colours as are announced; only 256 can be used.
    constexpr std::uint64_t mostColours = 256;
    if (!header || depth == 0 || depth > 32 || (!isCore && fields.numberOrZero(46, 4) > mostColours))
        return std::nullopt;
    bool isComplete = false;
    if (compression == Compression::none || compression == Compression::masks) {
        const std::uint64_t rowSize = (static_cast<std::uint64_t>(header->width) * depth + 31) / 32 * 4;
        const auto rows = static_cast<std::uint64_t>(header->height);
        isComplete = pixels <= file.size() && rowSize <= (file.size() - pixels) / rows;
    } else if (compression == Compression::runs8 || compression == Compression::runs4) {
        isComplete = reachesEnd(fields, pixels, compression == Compression::runs4);
    }
    return isComplete ? std::optional(file) : std::nullopt;
}

} // namespace tavel
