#include "TavelClipboardAgent/Formats/LoadRepresentations.h"

#include "Support/Error.h"
#include "Support/InputFile.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"
#include "TavelClipboardAgent/Formats/ValidRepresentation.h"

#include <optional>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace tavel {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

[[noreturn]] void fail(int code, const std::string& what) {
    throw Error("ClipboardFormats", code, what);
}

std::string_view lastComponent(std::string_view path) {
    while (path.ends_with('/'))
        path.remove_suffix(1);
    return path.substr(path.rfind('/') + 1); // the whole path if it has no slash
}

/// The format that the file's name tells. Throws if it is among `seen` already, to which it is added.
const ClipboardFormat& formatOf(const std::string& path, std::unordered_set<std::string_view>& seen) {
    const std::string_view name = lastComponent(path);
    const ClipboardFormat* const format = findClipboardFormat(name);
    if (format == nullptr || !seen.insert(name).second)
        fail(2, path + ": not the name of a format, or a repeated one");
    return *format;
}

Bytes readWithin(const std::string& path, std::size_t budget) {
    std::optional<InputFile> file;
    try {
        file.emplace(path, InputFile::Links::refuse);
    } catch (const Error& error) {
        fail(2, error.description());
    }
    if (file->size() < 1 || file->size() > budget)
        fail(2, path + ": empty or too large");
    Bytes content = file->read(budget + 1); // one byte more shows that the file has grown
    file->close();
    return content;
}

Bytes withByteOrderMark(const Bytes& html) {
    if (html.view().starts_with(byteOrderMark))
        return html;
    std::string marked;
    marked.reserve(byteOrderMark.size() + html.size());
    return Bytes::adopt(marked.append(byteOrderMark).append(html.view()));
}

void check(const ClipboardFormat& format, const Bytes& content, std::size_t budget) {
    if (!validRepresentation(format.name, content.view()) || content.size() > budget)
        fail(3, std::string(format.name) + ": invalid or too large");
}

} // namespace

std::vector<Representation> loadRepresentations(std::span<const std::string> paths) {
    if (paths.empty() || paths.size() > clipboardFormats.size())
        fail(1, "no files, or too many");
    std::vector<Representation> loaded;
    std::unordered_set<std::string_view> seen;
    std::size_t budget = maximumFormatsBytes;
    for (const std::string& path : paths) {
        const ClipboardFormat& format = formatOf(path, seen);
        Bytes content = readWithin(path, budget);
        check(format, content, budget);
        if (format.name == "text.html") {
            content = withByteOrderMark(content);
            check(format, content, budget); // with the mark it may be too large
        }
        budget -= content.size();
        loaded.push_back({std::string(format.type), std::move(content)});
    }
    return loaded;
}

} // namespace tavel
