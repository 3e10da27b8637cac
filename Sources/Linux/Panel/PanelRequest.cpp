#include "Linux/Panel/PanelRequest.h"

#include "Linux/Panel/MessageFields.h"

#include <limits>

namespace tavel {

namespace {

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

} // namespace

std::string lineOf(const PanelRequest& request) {
    return std::visit([](const auto& one) { return writerOf(one).line(); }, request);
}

std::optional<PanelRequest> panelRequestFrom(std::string_view line) {
    MessageReader reader(line);
    auto request = readRequest(reader);
    return reader.isComplete() ? request : std::nullopt;
}

} // namespace tavel
