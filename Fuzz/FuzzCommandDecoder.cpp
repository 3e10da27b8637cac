#include "Fuzz/Fuzz.h"
#include "Fuzz/Records.h"
#include "Tests/Unit/Agent/CommandContent.h"
#include "Tests/Unit/Agent/Decoding.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

namespace tavel {
namespace {

using Contents = std::vector<std::optional<CommandContent>>;

std::optional<CommandContent> contentIfAny(const std::optional<ClipboardCommand>& command) {
    return command ? std::optional(contentOf(*command)) : std::nullopt;
}

/// The commands of the lines, each of which is held whole.
Contents inWhole(std::string_view lines) {
    Contents contents;
    while (!lines.empty()) {
        std::string_view line = lines.substr(0, lines.find('\n'));
        const bool isLast = line.size() == lines.size();
        lines.remove_prefix(isLast ? line.size() : line.size() + 1);
        if (!isLast && line.ends_with('\r'))
            line.remove_suffix(1);
        contents.push_back(contentIfAny(decodeLine(line)));
    }
    return contents;
}

/// The commands of the lines as they arrive in pieces of that size, with their payloads taken out.
Contents inPieces(std::string_view lines, std::size_t pieceSize) {
    const Records records;
    for (; !lines.empty(); lines.remove_prefix(std::min(pieceSize, lines.size())))
        require(records.put(lines.substr(0, pieceSize)));
    records.end();
    LineReader reader(records.descriptor(), std::size_t{1} << 20, 80);
    CommandDecoder decoder;
    Contents contents;
    while (const auto line = reader.next())
        contents.push_back(contentIfAny(decoder.decode(*line)));
    return contents;
}

} // namespace
} // namespace tavel

/// Decodes each line of the input twice, with the same result.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavel;
    const std::string_view lines = inputText(data, std::min(size, Records::largest));
    const std::size_t pieceSize = std::max(1 + lines.size() % 97, lines.size() / (Records::most / 2) + 1);
    require(inPieces(lines, pieceSize) == inWhole(lines));
    return 0;
}
