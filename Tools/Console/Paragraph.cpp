#include "Console/Paragraph.h"

#include "Console/ExportedFile.h"
#include "Console/HumanText.h"

#include <algorithm>

namespace tavel {

namespace {

/// Further paths of a selection are only counted.
constexpr std::size_t longestPathList = 20;

std::string numbered(std::uint64_t sequence) {
    return "(#" + std::to_string(sequence) + ")";
}

std::string originOf(const std::string& marker) {
    return marker.empty() ? std::string() : ", sent by " + quotedText(marker);
}

std::string headlineOf(const event::PathsChange& change) {
    if (change.kind == contentKind::files)
        return counted(change.paths.size(), "file");
    if (change.kind == contentKind::formats)
        return counted(change.paths.size(), "format");
    return visibleText(change.kind);
}

class Describer {
public:
    explicit Describer(std::string_view requestName) : requestName_(requestName) {}

    Paragraph operator()(const Reply& reply) const {
        std::string text = "[" + std::to_string(reply.requestID) + "]";
        if (!requestName_.empty())
            text += " " + visibleText(requestName_);
        if (reply.ok)
            return {text + ": done " + numbered(reply.sequence)};
        return {text + ": failed: " + visibleText(reply.reason) + " " + numbered(reply.sequence),
                Tone::failure};
    }

    Paragraph operator()(const event::Announcement& announcement) const {
        return {"clipboard changed " + numbered(announcement.sequence) + originOf(announcement.marker),
                Tone::dim};
    }

    Paragraph operator()(const event::TextChange& change) const {
        return {"text, " + humanSize(change.text.size()) + ": " + quotedText(change.text.view())};
    }

    Paragraph operator()(const event::PathsChange& change) const {
        if (change.kind == contentKind::image && change.paths.size() == 1)
            return {describePicture(change.paths.front())};
        const bool inFormats = change.kind == contentKind::formats;
        std::string text = headlineOf(change) + ":";
        const std::size_t shown = std::min(change.paths.size(), longestPathList);
        for (std::size_t i = 0; i < shown; ++i)
            text += "\n  " + (inFormats ? describeFormat(change.paths[i]) : visibleText(change.paths[i]));
        if (shown < change.paths.size())
            text += "\n  ... and " + std::to_string(change.paths.size() - shown) + " more";
        return {text};
    }

    Paragraph operator()(const event::Log& log) const {
        return {visibleText(log.level) + ": " + visibleText(log.message), Tone::warning};
    }

    Paragraph operator()(const event::FileRenamed& renamed) const {
        return {"the content was pasted as a file " + numbered(renamed.sequence)};
    }

private:
    std::string_view requestName_;
};

std::string_view colorOf(Tone tone) {
    switch (tone) {
    case Tone::dim:
        return "\x1b[2m";
    case Tone::failure:
        return "\x1b[31m";
    case Tone::warning:
        return "\x1b[33m";
    case Tone::normal:
        break;
    }
    return {};
}

} // namespace

Paragraph describeMessage(const AgentMessage& message, std::string_view requestName) {
    return std::visit(Describer(requestName), message);
}

Paragraph describeUnintelligible(std::string_view line) {
    return {"the agent said something unintelligible: " + quotedText(line), Tone::warning};
}

std::string render(const Paragraph& paragraph, bool colored) {
    const std::string_view color = colored ? colorOf(paragraph.tone) : std::string_view();
    if (color.empty())
        return paragraph.text + '\n';
    return std::string(color) + paragraph.text + "\x1b[0m\n";
}

} // namespace tavel
