#include "Linux/Panel/PanelReport.h"

#include "Linux/Panel/MessageFields.h"

namespace tavel {

namespace {

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
    return std::nullopt;
}

} // namespace

std::string lineOf(const PanelReport& report) {
    return std::visit([](const auto& one) { return writerOf(one).line(); }, report);
}

std::optional<PanelReport> panelReportFrom(std::string_view line) {
    MessageReader reader(line);
    auto report = readReport(reader);
    return reader.isComplete() ? report : std::nullopt;
}

} // namespace tavel
