#include "Fuzz/Fuzz.h"
#include "Linux/Panel/PanelMessages.h"

#include <optional>
#include <string>

namespace tavel {
namespace {

/// A message that can be read is written as a line that reads the same.
template <typename Message>
void checkWritten(const std::optional<Message>& message, std::optional<Message> (*read)(std::string_view)) {
    if (!message)
        return;
    const std::string line = lineOf(*message);
    require(line.ends_with('\n') && line.find('\n') == line.size() - 1);
    const auto again = read(std::string_view(line).substr(0, line.size() - 1));
    require(again && again->index() == message->index() && lineOf(*again) == line);
}

} // namespace
} // namespace tavel

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavel;
    const std::string_view line = inputText(data, size);
    const auto request = panelRequestFrom(line);
    const auto report = panelReportFrom(line);
    require(!request || !report);
    checkWritten(request, panelRequestFrom);
    checkWritten(report, panelReportFrom);
    return 0;
}
