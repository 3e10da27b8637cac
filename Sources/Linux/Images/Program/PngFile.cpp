#include "Linux/Images/Program/PngFile.h"

#include "Linux/Images/Program/Deflater.h"

namespace tavel {
namespace {

std::span<const std::uint8_t> octets(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string bigEndian(std::size_t value) {
    return {static_cast<char>(value >> 24 & 0xFF), static_cast<char>(value >> 16 & 0xFF),
            static_cast<char>(value >> 8 & 0xFF), static_cast<char>(value & 0xFF)};
}

std::string chunk(std::string_view name, std::string_view data) {
    std::string text(name);
    text += data;
    return bigEndian(data.size()) + text + bigEndian(crc32(octets(text)));
}

std::string zlibStream(std::string_view data) {
    std::string stream(std::begin(zlibStart), std::end(zlibStart));
    const std::size_t start = stream.size();
    stream.resize(start + Deflater::bound(data.size()));
    auto* const target = reinterpret_cast<std::uint8_t*>(stream.data() + start);
    stream.resize(start + Deflater().compress(octets(data), true, target));
    return stream + bigEndian(adler32(1, octets(data)));
}

std::string profileChunk(std::string_view profile) {
    constexpr std::string_view nameAndMethod("ICC\0\0", 5);
    return chunk("iCCP", std::string(nameAndMethod) + zlibStream(profile));
}

} // namespace

bool writePngStart(const PngHeader& header, ImageOutput& output) {
    std::string text = "\x89PNG\r\n\x1a\n";
    std::string fields = bigEndian(header.width) + bigEndian(header.height);
    fields += {static_cast<char>(header.depth), static_cast<char>(header.colour), 0, 0, 0};
    text += chunk("IHDR", fields);
    if (!header.profile.empty())
        text += profileChunk(header.profile);
    if (!header.palette.empty())
        text += chunk("PLTE", header.palette);
    if (!header.alphas.empty())
        text += chunk("tRNS", header.alphas);
    return output.append(text);
}

bool writePngEnd(ImageOutput& output) {
    return output.append(chunk("IEND", ""));
}

} // namespace tavel
