#include "Tests/Wayland/WaylandProgram.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace tavel {

namespace {

std::shared_ptr<WaylandSelections> connect(const std::string& display, const TransferTimeOuts& timeOuts) {
    auto selections = openSelections(display, timeOuts);
    if (selections == nullptr)
        throw std::runtime_error("There is no data control at " + display);
    return selections;
}

} // namespace

std::shared_ptr<WaylandSelections> openSelections(const std::string& display,
                                                  const TransferTimeOuts& timeOuts, std::string* refusal) {
    return WaylandSelections::open(
        display, TAVEL_WAYLAND_MODULE, [](const std::string& message) { ADD_FAILURE() << message; }, timeOuts,
        refusal);
}

WaylandProgram::WaylandProgram(const std::string& display, const TransferTimeOuts& timeOuts)
    : PasteboardProgram(connect(display, timeOuts)) {}

} // namespace tavel
