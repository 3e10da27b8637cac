#include "Linux/Images/Program/PngFile.h"

#include <libdeflate.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace tavel {
namespace {

/// libdeflate's fastest: a user waits for the file, and it is soon deleted.
constexpr int compressionLevel = 1;

constexpr std::size_t chunkOverhead = 12; // length, name and checksum

std::string bigEndian(std::size_t value) {
    return {static_cast<char>(value >> 24 & 0xFF), static_cast<char>(value >> 16 & 0xFF),
            static_cast<char>(value >> 8 & 0xFF), static_cast<char>(value & 0xFF)};
}

struct FreeCompressor {
    void operator()(libdeflate_compressor* compressor) const { libdeflate_free_compressor(compressor); }
};

struct Free {
    void operator()(char* data) const { std::free(data); }
};

/// Memory from malloc, which realloc can shrink in place.
using Block = std::unique_ptr<char, Free>;

class Compressor {
public:
    Compressor() : compressor_(libdeflate_alloc_compressor(compressionLevel)) {
        if (compressor_ == nullptr)
            throw std::bad_alloc();
    }

    std::size_t bound(std::size_t size) { return libdeflate_zlib_compress_bound(compressor_.get(), size); }

    /// `target` must have room for bound(size) bytes.
    std::size_t compress(const void* data, std::size_t size, char* target) {
        return libdeflate_zlib_compress(compressor_.get(), data, size, target, bound(size));
    }

private:
    std::unique_ptr<libdeflate_compressor, FreeCompressor> compressor_;
};

std::string chunk(std::string_view name, std::string_view data) {
    std::string text(name);
    text += data;
    const std::uint32_t checksum = libdeflate_crc32(0, text.data(), text.size());
    return bigEndian(data.size()) + text + bigEndian(checksum);
}

std::string profileChunk(std::string_view profile, Compressor& compressor) {
    std::string compressed(compressor.bound(profile.size()), '\0');
    compressed.resize(compressor.compress(profile.data(), profile.size(), compressed.data()));
    constexpr std::string_view nameAndMethod("ICC\0\0", 5);
    return chunk("iCCP", std::string(nameAndMethod) + compressed);
}

std::string leadingChunks(const PngHeader& header, Compressor& compressor) {
    std::string text = "\x89PNG\r\n\x1a\n";
    std::string fields = bigEndian(header.width) + bigEndian(header.height);
    fields += {static_cast<char>(header.depth), static_cast<char>(header.colour), 0, 0, 0};
    text += chunk("IHDR", fields);
    if (!header.profile.empty())
        text += profileChunk(header.profile, compressor);
    if (!header.palette.empty())
        text += chunk("PLTE", header.palette);
    if (!header.alphas.empty())
        text += chunk("tRNS", header.alphas);
    return text;
}

} // namespace

std::size_t filteredSize(const PngHeader& header) {
    const std::size_t samples = header.colour == PngColour::rgb         ? 3
                                : header.colour == PngColour::greyAlpha ? 2
                                : header.colour == PngColour::rgba      ? 4
                                                                        : 1;
    return header.height * (1 + (header.width * samples * header.depth + 7) / 8);
}

Bytes writePng(const PngHeader& header, std::span<const std::uint8_t> filtered) {
    Compressor compressor;
    const std::string lead = leadingChunks(header, compressor);
    const std::string end = chunk("IEND", "");
    const std::size_t room = lead.size() + chunkOverhead + compressor.bound(filtered.size()) + end.size();
    Block block(static_cast<char*>(std::malloc(room)));
    if (block == nullptr)
        throw std::bad_alloc();
    char* at = block.get();
    const auto append = [&at](std::string_view text) { at += text.copy(at, text.size()); };
    append(lead);
    // One chunk: the largest picture is far smaller than a chunk may be, 2 GiB.
    char* const name = at + 4;
    const std::size_t size = compressor.compress(filtered.data(), filtered.size(), name + 4);
    append(bigEndian(size));
    append("IDAT");
    at += size;
    append(bigEndian(libdeflate_crc32(0, name, 4 + size)));
    append(end);
    const auto total = static_cast<std::size_t>(at - block.get());
    if (char* const shrunk = static_cast<char*>(std::realloc(block.get(), total))) {
        static_cast<void>(block.release());
        block.reset(shrunk);
    }
    const char* const data = block.get();
    return {std::shared_ptr<const void>(block.release(), std::free), data, total};
}

} // namespace tavel
