#include "Pasteboard/Tasks.h"

#include "Pasteboard/Gathered.h"
#include "Pasteboard/Input.h"
#include "Platform/PasteboardTypes.h"
#include "Support/Error.h"
#include "Support/FileUrl.h"
#include "Support/Files.h"
#include "Support/Text.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace tavel {

namespace {

/// More than this, in bytes or in files, would only fill the memory of a tool that prints it.
constexpr std::size_t largestContent = std::size_t{512} << 20;
constexpr FileListLimit mostFiles{1'000'000, largestContent};

[[noreturn]] void fail(const std::string& description) {
    throw Error("Tavel", 1, description);
}

bool isText(std::string_view content) {
    return content.find('\0') == std::string_view::npos && isUtf8(content);
}

Representation loadRepresentation(const std::string& type, const std::string& file) {
    Representation loaded{type, readInput(file)};
    if (type == pasteboardType::string && !isUtf8(loaded.data.view()))
        fail((file == standardInputName ? std::string("standard input") : file) + " is not text in UTF-8");
    return loaded;
}

PasteboardItem fileItem(const std::string& given) {
    // Lexically, so that a symbolic link is copied itself, not its target.
    const std::string path = std::filesystem::absolute(given).lexically_normal().string();
    if (!fileExists(path))
        fail(given + ": no such file or directory");
    if (!isUtf8(path))
        fail(given + ": the path is not in UTF-8, so no other application could read it");
    return {{std::string(pasteboardType::fileUrl), Bytes::adopt(fileUrlFromPath(path))}};
}

class Performer {
public:
    Performer(EventLoop& loop, Pasteboard& pasteboard, int output)
        : loop_(loop), pasteboard_(pasteboard), output_(output) {}

    void operator()(const task::Copy& copy) { replaceContents({{loadRepresentation(copy.type, copy.file)}}); }

    void operator()(const task::CopyFiles& copy) {
        std::vector<PasteboardItem> items;
        items.reserve(copy.paths.size());
        for (const std::string& path : copy.paths)
            items.push_back(fileItem(path));
        replaceContents(items);
    }

    void operator()(const task::Set& set) {
        PasteboardItem item;
        for (const auto& [type, file] : set.sources)
            item.push_back(loadRepresentation(type, file));
        replaceContents({item});
    }

    void operator()(const task::Paste& paste) {
        std::optional<Bytes> content;
        Gathered(loop_, pasteboard_).awaitValue({paste.type, largestContent}, [&] {
            // `string` joins the texts of all items; `data` reads only the first.
            if (paste.type == pasteboardType::string)
                content = pasteboard_.string(paste.type, largestContent);
            if (!content)
                content = pasteboard_.data(paste.type, largestContent);
        });
        if (!content)
            fail("there is nothing of the type " + paste.type + " on the pasteboard");
        if (content->size() > largestContent)
            fail("what is on the pasteboard is larger than 512 MiB");
        if (!paste.forced && isatty(output_) != 0 && !isText(content->view()))
            fail("what is on the pasteboard is not text, and a terminal could take it for orders; send it "
                 "to a file, or use --force");
        write(content->view());
    }

    void operator()(const task::PasteFiles&) {
        const WantedValue urls{std::string(pasteboardType::fileUrl), largestUrlBytes(mostFiles)};
        FileList files;
        Gathered(loop_, pasteboard_).awaitValue(urls, [&] { files = pasteboard_.files(mostFiles); });
        if (!files.isComplete)
            fail("there are more than a million files on the pasteboard");
        if (files.paths.empty())
            fail("there are no files on the pasteboard");
        writeLines(files.paths);
    }

    void operator()(const task::Types&) {
        Gathered(loop_, pasteboard_).awaitTypes();
        writeLines(pasteboard_.types());
    }

    void operator()(const task::Count&) { writeLines({std::to_string(pasteboard_.changeCount())}); }

    void operator()(const task::Clear&) {
        if (!pasteboard_.replaceWithItems({}))
            fail("the pasteboard cannot be cleared");
    }

private:
    void replaceContents(const std::vector<PasteboardItem>& items) {
        if (!pasteboard_.replaceWithItems(items))
            fail("the pasteboard refused the content");
    }

    void writeLines(const std::vector<std::string>& lines) const {
        std::string text;
        for (const std::string& line : lines)
            text.append(line).append("\n");
        write(text);
    }

    void write(std::string_view content) const {
        if (!writeAll(output_, content))
            fail("standard output: " + std::generic_category().message(errno));
    }

    EventLoop& loop_;
    Pasteboard& pasteboard_;
    int output_;
};

} // namespace

void performTask(const PasteboardTask& task, EventLoop& loop, Pasteboard& pasteboard, int output) {
    std::visit(Performer(loop, pasteboard, output), task);
}

} // namespace tavel
