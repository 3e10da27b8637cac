#include "Console/ExportedFile.h"

#include "Console/HumanText.h"
#include "ImageHeaders/ImageHeader.h"
#include "Support/Error.h"
#include "Support/Files.h"
#include "Support/InputFile.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string_view>

namespace tavel {

namespace {

/// What a file is, for people.
struct Kind {
    std::string_view description;
    bool hasPixels;
};

struct FormatName {
    std::string_view fileName;
    Kind kind;
};

constexpr std::array formatNames{
    FormatName{"document.pdf", {"PDF", false}},       FormatName{"image.gif", {"GIF picture", true}},
    FormatName{"image.svg", {"SVG picture", false}},  FormatName{"image.webp", {"WebP picture", true}},
    FormatName{"image.tiff", {"TIFF picture", true}}, FormatName{"image.jpeg", {"JPEG picture", true}},
    FormatName{"image.png", {"PNG picture", true}},   FormatName{"text.rtf", {"RTF", false}},
    FormatName{"text.html", {"HTML", false}},         FormatName{"text.txt", {"plain text", false}},
};

/// Nearly every picture tells its size in the beginning of the file.
constexpr std::size_t beginningBytes = std::size_t{64} * 1024;

/// The most that the agent exports: some TIFF files tell the size at their end.
constexpr std::size_t wholeBytes = std::size_t{128} * 1024 * 1024;

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

std::string describe(const Kind& kind, const std::string& path) {
    const std::string what(kind.description);
    try {
        const std::size_t size = InputFile(path, InputFile::Links::follow).size();
        const std::string pixels = kind.hasPixels ? ", " + pixelsOf(path, size) : std::string();
        return what + pixels + ", " + humanSize(size) + ": " + visibleText(path);
    } catch (const Error& error) {
        if (!fileExists(path))
            return what + ", gone by now: " + visibleText(path);
        return what + ", not readable: " + visibleText(error.what());
    }
}

} // namespace

std::string describePicture(const std::string& path) {
    return describe({"picture", true}, path);
}

std::string describeFormat(const std::string& path) {
    const std::string fileName = std::filesystem::path(path).filename().string();
    const auto* const found = std::ranges::find(formatNames, fileName, &FormatName::fileName);
    return describe(found != formatNames.end() ? found->kind : Kind{"unknown format", false}, path);
}

} // namespace tavel
