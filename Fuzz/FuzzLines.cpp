#include "Fuzz/Fuzz.h"
#include "Fuzz/Records.h"
#include "Support/LineReader.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace tavel {
namespace {

/// Puts each chunk of the input: its length and how often to repeat it, then its bytes. Returns what was put.
std::string putChunks(const Records& records, std::string_view input) {
    std::string put;
    for (std::size_t count = 0; input.size() > 2 && count < Records::most; ++count) {
        const std::size_t length =
            std::min<std::size_t>(static_cast<unsigned char>(input[0]) + 1U, input.size() - 2);
        const std::size_t repetitions = static_cast<unsigned char>(input[1]) + 1U;
        std::string chunk;
        for (std::size_t i = 0; i < repetitions && chunk.size() + length <= Records::largest; ++i)
            chunk += input.substr(2, length);
        input.remove_prefix(2 + length);
        if (!records.put(chunk))
            break;
        put += chunk;
    }
    return put;
}

std::vector<std::string> linesOf(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t feed = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, feed);
        if (feed < text.size() && line.ends_with('\r'))
            line.remove_suffix(1);
        lines.emplace_back(line);
        text.remove_prefix(std::min(feed + 1, text.size()));
    }
    return lines;
}

/// Slashes lose their backslash in a string that was tried as a payload.
std::string withPlainSlashes(const std::string& text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size() || text[i + 1] != '/')
            plain += text[i];
    }
    return plain;
}

std::string wholeText(const LineReader::Line& line) {
    std::string text(line.text.data(), line.text.size());
    if (line.payload)
        text.insert(line.payload->offset, line.payload->content.text());
    return text;
}

/// The lines as a reader gives them that searches lines of that size for a payload.
std::vector<std::string> linesOf(const Records& records, std::size_t searchedBytes) {
    constexpr std::size_t longestPayload = std::size_t{1} << 20;
    std::vector<std::string> lines;
    std::vector<std::pair<LineReader::Payload, std::string>> kept;
    {
        LineReader reader(records.descriptor(), longestPayload, searchedBytes);
        while (auto line = reader.next()) {
            for (std::size_t i = 0; i < LineReader::padding; ++i) // may be read
                static_cast<void>(*const_cast<volatile char*>(line->text.data() + line->text.size() + i));
            lines.push_back(wholeText(*line));
            std::ranges::fill(line->text, '\n'); // may be changed
            if (line->payload) {
                std::string text = line->payload->content.text();
                kept.emplace_back(std::move(*line->payload), std::move(text));
            }
        }
        require(!reader.next());
    }
    for (const auto& [payload, text] : kept)
        require(payload.content.text() == text);
    return lines;
}

} // namespace
} // namespace tavel

/// Reads the chunks as lines. A payload must stay as it was while the reader goes on.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavel;
    for (const std::size_t searchedBytes : {std::size_t{80}, LineReader::longLineBytes}) {
        const Records records;
        const std::string put = putChunks(records, inputText(data, size));
        records.end();
        const auto lines = linesOf(records, searchedBytes);
        const auto expected = linesOf(put);
        require(std::ranges::equal(lines, expected, {}, withPlainSlashes, withPlainSlashes));
    }
    return 0;
}
