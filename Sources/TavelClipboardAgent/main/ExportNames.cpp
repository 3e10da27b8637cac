#include "TavelClipboardAgent/main/ExportNames.h"

#include "Support/PrivateDirectory.h"
#include "Support/Uuid.h"

namespace tavel::exportNames {

namespace {

constexpr std::string_view directoryPrefix = "tavel-clipboard-";
constexpr std::string_view formatsPrefix = "formats-";
constexpr std::string_view pastePrefix = "paste-";
constexpr std::string_view pictureSuffix = ".png";

bool isUuidAfter(std::string_view prefix, std::string_view name) {
    return name.starts_with(prefix) && isUuid(name.substr(prefix.size()));
}

bool isPicture(std::string_view name) {
    return name.ends_with(pictureSuffix) && isUuid(name.substr(0, name.size() - pictureSuffix.size()));
}

} // namespace

std::string newDirectory() {
    return std::string(directoryPrefix) + makeUuid();
}

std::string newFormats() {
    return std::string(formatsPrefix) + makeUuid();
}

std::string newPaste() {
    return std::string(pastePrefix) + makeUuid();
}

std::string newPicture() {
    return makeUuid() + std::string(pictureSuffix);
}

bool isDirectory(std::string_view name) {
    return isUuidAfter(directoryPrefix, name);
}

bool isExport(std::string_view name) {
    return isUuidAfter(formatsPrefix, name) || isUuidAfter(pastePrefix, name) || isPicture(name) ||
           isPartialFileName(name);
}

} // namespace tavel::exportNames
