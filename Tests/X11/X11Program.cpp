#include "Tests/X11/X11Program.h"

#include <memory>
#include <stdexcept>
#include <utility>

namespace tavel {

namespace {

std::shared_ptr<X11Selections> connect(const std::string& display, const TransferTimeOuts& timeOuts) {
    auto connection = X11Connection::open(display.c_str());
    if (connection == nullptr)
        throw std::runtime_error("There is no X server at " + display);
    return std::make_shared<X11Selections>(std::move(connection), timeOuts);
}

} // namespace

X11Program::X11Program(const std::string& display, const TransferTimeOuts& timeOuts)
    : PasteboardProgram(connect(display, timeOuts)) {}

} // namespace tavel
