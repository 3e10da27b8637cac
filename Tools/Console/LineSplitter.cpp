#include "Console/LineSplitter.h"

#include <utility>

namespace tavel {

namespace {

std::string_view withoutCarriageReturn(std::string_view line) {
    return line.ends_with('\r') ? line.substr(0, line.size() - 1) : line;
}

} // namespace

void LineSplitter::append(std::string_view bytes, const LineHandler& handleLine) {
    for (;;) {
        const std::size_t feed = bytes.find('\n');
        if (feed == std::string_view::npos)
            break;
        if (rest_.empty()) {
            handleLine(withoutCarriageReturn(bytes.substr(0, feed)));
        } else {
            const std::string line = std::exchange(rest_, std::string()).append(bytes.substr(0, feed));
            handleLine(withoutCarriageReturn(line));
        }
        bytes.remove_prefix(feed + 1);
    }
    rest_.append(bytes);
}

void LineSplitter::finish(const LineHandler& handleLine) {
    if (rest_.empty())
        return;
    const std::string line = std::exchange(rest_, std::string());
    handleLine(line);
}

} // namespace tavel
