#include "Console/ExportedFile.h"

#include "Console/HumanText.h"
#include "ImageHeaders/ImageHeader.h"
#include "Support/Error.h"
#include "Support/Files.h"
#include "Support/InputFile.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"

#include <cstddef>
#include <filesystem>
#include <optional>

namespace tavel {

namespace {

/// Nearly every picture has its size in pixels within this many bytes.
constexpr std::size_t beginningBytes = std::size_t{64} * 1024;

/// Some TIFF files have the size in pixels at their end.
constexpr std::size_t wholeBytes = maximumBytes(FormatKind::picture);

std::optional<ImageHeader> readHeader(const std::string& path, std::size_t longest) {
    return readImageHeader(InputFile(path, InputFile::Links::follow).read(longest).view());
}

std::string pixelsOf(const std::string& path, std::size_t size) {
    auto header = readHeader(path, beginningBytes);
    if (!header && size > beginningBytes)
        header = readHeader(path, wholeBytes);
    if (!header)
        return "of unknown dimensions";
    return std::to_string(header->width) + " × " + std::to_string(header->height) + " pixels";
}

std::string describe(const std::string& what, bool hasPixels, const std::string& path) {
    try {
        const std::size_t size = InputFile(path, InputFile::Links::follow).size();
        const std::string pixels = hasPixels ? ", " + pixelsOf(path, size) : std::string();
        return what + pixels + ", " + humanSize(size) + ": " + visibleText(path);
    } catch (const Error& error) {
        if (!fileExists(path))
            return what + ", gone by now: " + visibleText(path);
        return what + ", not readable: " + visibleText(error.what());
    }
}

} // namespace

std::string describePicture(const std::string& path) {
    return describe("picture", true, path);
}

std::string describeFormat(const std::string& path) {
    const std::string fileName = std::filesystem::path(path).filename().string();
    const ClipboardFormat* const format = findClipboardFormat(fileName);
    if (format == nullptr)
        return describe("unknown format", false, path);
    const bool hasPixels = format->kind == FormatKind::picture;
    const bool isPicture = hasPixels || format->kind == FormatKind::vectorPicture;
    return describe(std::string(format->description) + (isPicture ? " picture" : ""), hasPixels, path);
}

} // namespace tavel
