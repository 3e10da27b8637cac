#include "Linux/Panel/PanelMessages.h"

#include "Support/Base64.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace tavel {

namespace {

class MessageWriter {
public:
    explicit MessageWriter(std::string_view word) : line_(word) {}

    MessageWriter& add(double number) {
        std::array<char, 32> digits{}; // the shortest exact form takes at most 24
        const auto result = std::to_chars(digits.begin(), digits.end(), number);
        line_.append(1, ' ').append(digits.begin(), result.ptr);
        return *this;
    }

    MessageWriter& add(std::string_view text) {
        line_ += ' ';
        appendBase64(line_, text);
        return *this;
    }

    std::string line() const { return line_ + '\n'; }

private:
    std::string line_;
};

/// Reads the fields of a line. A missing or malformed field yields 0 or an empty text, and isComplete() is
/// false from then on.
class MessageReader {
public:
    explicit MessageReader(std::string_view line)
        : word_(line.substr(0, line.find(' '))), rest_(line.substr(word_.size())) {}

    std::string_view word() const { return word_; }

    /// Always finite.
    double number() {
        const std::string_view field = nextField();
        double value = 0;
        const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value);
        if (error == std::errc{} && end == field.data() + field.size() && std::isfinite(value))
            return value;
        hasFailed_ = true;
        return 0;
    }

    std::string text() {
        if (const auto bytes = decodeBase64(nextField()))
            return std::string(bytes->view());
        hasFailed_ = true;
        return {};
    }

    bool isAtEnd() const { return rest_.empty(); }

    /// Whether every field that was read was valid, and none is left.
    bool isComplete() const { return !hasFailed_ && isAtEnd(); }

private:
    std::string_view nextField() {
        if (rest_.empty()) {
            hasFailed_ = true;
            return {};
        }
        rest_.remove_prefix(1);
        const std::string_view field = rest_.substr(0, rest_.find(' '));
        rest_.remove_prefix(field.size());
        return field;
    }

    std::string_view word_;
    std::string_view rest_; // each field with the space before it
    bool hasFailed_ = false;
};

MessageWriter writerOf(const PanelStart& start) {
    const NamePanelTexts& texts = start.texts;
    MessageWriter writer("start");
    writer.add(static_cast<double>(start.process));
    for (const std::string* text :
         {&texts.title, &texts.extensionLabel, &texts.stem, &texts.cancelTitle, &texts.confirmTitle})
        writer.add(*text);
    return writer;
}

MessageWriter writerOf(ScreenPoint origin) {
    return MessageWriter("origin").add(origin.x).add(origin.y);
}

MessageWriter writerOf(const PanelShow&) {
    return MessageWriter("show");
}

MessageWriter writerOf(const PanelHint& hint) {
    return MessageWriter("hint").add(hint.text);
}

MessageWriter writerOf(const PanelReady& ready) {
    const ScreenSurroundings& surroundings = ready.surroundings;
    MessageWriter writer("ready");
    writer.add(surroundings.pointer.x).add(surroundings.pointer.y);
    writer.add(surroundings.window.width).add(surroundings.window.height);
    for (const Screen& screen : surroundings.screens)
        for (const ScreenRectangle& place : {screen.frame, screen.visibleFrame})
            writer.add(place.x).add(place.y).add(place.width).add(place.height);
    return writer;
}

MessageWriter writerOf(const PanelConfirmed& confirmed) {
    return MessageWriter("confirm").add(confirmed.text);
}

MessageWriter writerOf(const PanelCancelled&) {
    return MessageWriter("cancel");
}

MessageWriter writerOf(const PanelCopied& copied) {
    return MessageWriter("copy").add(copied.text);
}

std::optional<PanelRequest> readStart(MessageReader& reader) {
    const double process = reader.number();
    if (process < 1 || process > std::numeric_limits<pid_t>::max())
        return std::nullopt;
    PanelStart start{{}, static_cast<pid_t>(process)};
    NamePanelTexts& texts = start.texts;
    for (std::string* text :
         {&texts.title, &texts.extensionLabel, &texts.stem, &texts.cancelTitle, &texts.confirmTitle})
        *text = reader.text();
    return start;
}

std::optional<PanelRequest> readRequest(MessageReader& reader) {
    if (reader.word() == "start")
        return readStart(reader);
    if (reader.word() == "origin") {
        const double x = reader.number();
        return ScreenPoint{x, reader.number()};
    }
    if (reader.word() == "show")
        return PanelShow{};
    if (reader.word() == "hint")
        return PanelHint{reader.text()};
    return std::nullopt;
}

ScreenRectangle readRectangle(MessageReader& reader) {
    ScreenRectangle place;
    for (double* number : {&place.x, &place.y, &place.width, &place.height})
        *number = reader.number();
    return place;
}

PanelReady readReady(MessageReader& reader) {
    ScreenSurroundings surroundings;
    for (double* number : {&surroundings.pointer.x, &surroundings.pointer.y, &surroundings.window.width,
                           &surroundings.window.height})
        *number = reader.number();
    while (!reader.isAtEnd()) {
        const ScreenRectangle frame = readRectangle(reader);
        surroundings.screens.push_back({frame, readRectangle(reader)});
    }
    return {surroundings};
}

std::optional<PanelReport> readReport(MessageReader& reader) {
    if (reader.word() == "ready")
        return readReady(reader);
    if (reader.word() == "confirm")
        return PanelConfirmed{reader.text()};
    if (reader.word() == "cancel")
        return PanelCancelled{};
    if (reader.word() == "copy")
        return PanelCopied{reader.text()};
    return std::nullopt;
}

} // namespace

std::string lineOf(const PanelRequest& request) {
    return std::visit([](const auto& one) { return writerOf(one).line(); }, request);
}

std::string lineOf(const PanelReport& report) {
    return std::visit([](const auto& one) { return writerOf(one).line(); }, report);
}

std::optional<PanelRequest> panelRequestFrom(std::string_view line) {
    MessageReader reader(line);
    auto request = readRequest(reader);
    return reader.isComplete() ? request : std::nullopt;
}

std::optional<PanelReport> panelReportFrom(std::string_view line) {
    MessageReader reader(line);
    auto report = readReport(reader);
    return reader.isComplete() ? report : std::nullopt;
}

} // namespace tavel
