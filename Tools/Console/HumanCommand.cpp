#include "Console/HumanCommand.h"

#include "Console/HumanText.h"
#include "Support/Bytes.h"
#include "Support/Error.h"
#include "Support/InputFile.h"
#include "Support/Text.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"
#include "TavelClipboardAgent/main/Protocol/AgentMessage.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>
#include <vector>

namespace tavel {

namespace {

/// Above the agent's limit, so that the user sees the agent's refusal, and still small enough for memory.
constexpr std::size_t largestImageData = std::size_t{256} * 1024 * 1024;

/// The origin marker of the console's writes. Other agents report it with the change.
constexpr std::string_view consoleMarker = "tavel-console";

/// `Agent::send` sets the number.
constexpr std::uint64_t noRequestID = 0;

constexpr std::string_view blanks = " \t";

std::string_view withoutLeadingBlanks(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(blanks), text.size()));
}

bool isBlank(std::string_view text) {
    return withoutLeadingBlanks(text).empty();
}

std::string absolutePath(const std::string& word, const Places& places) {
    std::filesystem::path path = word;
    if (word == "~" || word.starts_with("~/"))
        path =
            places.homeDirectory / std::filesystem::path(word.substr(std::min<std::size_t>(2, word.size())));
    return (places.workingDirectory / path).lexically_normal().string();
}

/// Splits the line into words with the shell's quoting.
std::variant<std::vector<std::string>, wish::Mistake> splitWords(std::string_view text) {
    if (isBlank(text))
        return std::vector<std::string>();
    if (text.find('\0') != std::string_view::npos)
        return wish::Mistake{"No path holds a zero byte."};
    gint count = 0;
    gchar** found = nullptr;
    GError* error = nullptr;
    if (g_shell_parse_argv(std::string(text).c_str(), &count, &found, &error) == FALSE) {
        const bool empty = g_error_matches(error, G_SHELL_ERROR, G_SHELL_ERROR_EMPTY_STRING) != FALSE;
        g_error_free(error);
        if (empty) // a comment
            return std::vector<std::string>();
        return wish::Mistake{"A quotation mark is not closed, or the line ends in a backslash."};
    }
    const std::unique_ptr<gchar*, decltype(&g_strfreev)> owner(found, g_strfreev);
    return std::vector<std::string>(found, found + count);
}

using Paths = std::vector<std::string>;

struct PathsCommand {
    std::string_view usage;
    std::size_t maximumPaths;
    Wish (*wishFor)(const Paths& paths); // takes absolute paths
};

constexpr std::size_t anyNumber = std::string_view::npos;

Wish readPaths(std::string_view rest, const Places& places, const PathsCommand& command) {
    auto split = splitWords(rest);
    if (auto* const mistake = std::get_if<wish::Mistake>(&split))
        return std::move(*mistake);
    auto& words = std::get<Paths>(split);
    if (words.empty() || words.size() > command.maximumPaths)
        return wish::Mistake{"Usage: " + std::string(command.usage)};
    std::ranges::transform(words, words.begin(),
                           [&](const auto& word) { return absolutePath(word, places); });
    return command.wishFor(words);
}

wish::Mistake unreadable(const Error& error) {
    return {"Cannot read " + visibleText(error.what())};
}

Wish requestForPaths(std::string_view kind, const Paths& paths) {
    if (!std::ranges::all_of(paths, isUtf8))
        return wish::Mistake{"The paths are not all in UTF-8, so they cannot be sent."};
    return wish::Request{std::string(kind), command::WriteFiles{noRequestID, std::string(kind), paths,
                                                                std::string(consoleMarker), std::nullopt}};
}

/// Opens each file first, because the agent's refusal would not say why a file is unreadable.
Wish requestForContents(std::string_view kind, const Paths& paths) {
    try {
        for (const std::string& path : paths)
            const InputFile opened(path, InputFile::Links::follow);
    } catch (const Error& error) {
        return unreadable(error);
    }
    return requestForPaths(kind, paths);
}

Wish requestForImageData(const std::string& path) {
    try {
        InputFile file(path, InputFile::Links::follow);
        if (file.size() > largestImageData)
            return wish::Mistake{visibleText(path) + " has more than " + humanSize(largestImageData) +
                                 ", which is too much to send."};
        return wish::Request{"image-data", command::WriteImageData{noRequestID, file.read(largestImageData)}};
    } catch (const Error& error) {
        return unreadable(error);
    }
}

Wish readFiles(std::string_view rest, const Places& places) {
    return readPaths(rest, places, {"files PATH...", anyNumber, [](const Paths& paths) {
                                        return requestForPaths(contentKind::files, paths);
                                    }});
}

Wish readImage(std::string_view rest, const Places& places) {
    return readPaths(rest, places, {"image PATH", 1, [](const Paths& paths) {
                                        return requestForContents(contentKind::image, paths);
                                    }});
}

Wish readFormats(std::string_view rest, const Places& places) {
    return readPaths(rest, places, {"formats PATH...", anyNumber, [](const Paths& paths) {
                                        return requestForContents(contentKind::formats, paths);
                                    }});
}

Wish readImageData(std::string_view rest, const Places& places) {
    return readPaths(rest, places, {"image-data PATH", 1, [](const Paths& paths) {
                                        return requestForImageData(paths.front());
                                    }});
}

Wish readText(std::string_view rest, const Places&) {
    // All blanks after the first, which separates, belong to the text.
    if (rest.size() <= 1)
        return wish::Mistake{"Usage: text TEXT"};
    return wish::Request{
        "text", command::WriteText{noRequestID, Bytes::copyOf(rest.substr(1)), std::string(consoleMarker)}};
}

Wish readPrompt(std::string_view rest, const Places&) {
    const std::string_view word = withoutLeadingBlanks(rest);
    const std::string_view value = word.substr(0, word.find_last_not_of(blanks) + 1);
    if (value != "on" && value != "off")
        return wish::Mistake{"Usage: prompt on|off"};
    return wish::Request{"prompt", command::ConfigureFilePrompt{noRequestID, value == "on"}};
}

template <typename Command>
Wish readWithoutArguments(std::string_view rest, const char* name) {
    if (!isBlank(rest))
        return wish::Mistake{std::string("Usage: ") + name};
    return wish::Request{name, Command{noRequestID}};
}

Wish readPing(std::string_view rest, const Places&) {
    return readWithoutArguments<command::Ping>(rest, "ping");
}

Wish readDiscard(std::string_view rest, const Places&) {
    return readWithoutArguments<command::DiscardPending>(rest, "discard");
}

Wish readQuit(std::string_view rest, const Places&) {
    return readWithoutArguments<command::Quit>(rest, "quit");
}

Wish readHelp(std::string_view, const Places&) {
    return wish::Help{};
}

struct CommandReader {
    std::string_view name;
    Wish (*read)(std::string_view rest, const Places& places);
};

constexpr std::array commandReaders{
    CommandReader{"text", readText},       CommandReader{"files", readFiles},
    CommandReader{"image", readImage},     CommandReader{"image-data", readImageData},
    CommandReader{"formats", readFormats}, CommandReader{"ping", readPing},
    CommandReader{"discard", readDiscard}, CommandReader{"prompt", readPrompt},
    CommandReader{"quit", readQuit},       CommandReader{"help", readHelp},
};

std::filesystem::path currentDirectory() {
    std::error_code error;
    const std::filesystem::path directory = std::filesystem::current_path(error);
    return error ? std::filesystem::path("/") : directory;
}

/// The names of all formats, wrapped into lines of the help text.
std::string formatNamesHelp() {
    constexpr std::size_t column = 17; // where the explanations of commands begin
    constexpr std::size_t longestLine = 92;
    std::string help;
    std::string line(column, ' ');
    for (std::size_t i = 0; i < clipboardFormats.size(); ++i) {
        const std::size_t following = clipboardFormats.size() - i - 1;
        const std::string_view separator = following == 0 ? "" : following == 1 ? " or" : ",";
        const std::string word = std::string(clipboardFormats[i].name).append(separator);
        if (line.size() + 1 + word.size() > longestLine)
            help += std::exchange(line, std::string(column, ' ')) + "\n";
        line.append(line.size() == column ? "" : " ").append(word);
    }
    return help + line + "\n";
}

} // namespace

Places Places::ofThisProcess() {
    return {currentDirectory(), g_get_home_dir()};
}

Wish readHumanCommand(std::string_view line, const Places& places) {
    line = withoutLeadingBlanks(line);
    if (line.empty())
        return wish::Nothing{};
    const std::string_view name = line.substr(0, line.find_first_of(blanks));
    const auto* const command = std::ranges::find(commandReaders, name, &CommandReader::name);
    if (command == commandReaders.end())
        return wish::Mistake{"Unknown command " + quotedText(name) + ". Type help for the list."};
    return command->read(line.substr(name.size()), places);
}

std::string humanCommandHelp() {
    return "text TEXT        put the rest of the line on the pasteboard\n"
           "files PATH...    put files on the pasteboard; paths are quoted as in a shell\n"
           "image PATH       put a PNG picture on the pasteboard; the agent reads the file\n"
           "image-data PATH  put a picture of any kind there, as PNG and unmarked; the agent gets its bytes\n"
           "formats PATH...  put one thing in several formats there, one file each, which is named\n" +
           formatNamesHelp() +
           "discard          forget the changes that were not reported yet\n"
           "prompt on|off    ask for a name when a content is pasted as a file, or do not\n"
           "ping             see whether the agent answers\n"
           "quit             end the agent and the session\n"
           "help             show this list\n";
}

} // namespace tavel
