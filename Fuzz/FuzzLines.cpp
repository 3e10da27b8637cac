#include "Fuzz/Fuzz.h"
#include "Support/LineReader.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <vector>

namespace tavel {
namespace {

constexpr std::size_t largestChunk = 16'384; // what a reader always has room for
constexpr std::size_t mostChunks = 500;      // more do not fit into the socket

/// Its records are read one at a time, each by one call of read(2).
class Records {
public:
    Records() { require(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends_.data()) == 0); }
    ~Records() {
        close(ends_[0]);
        close(ends_[1]);
    }
    Records(const Records&) = delete;
    Records& operator=(const Records&) = delete;

    /// False if the record does not fit any more.
    bool put(std::string_view bytes) const {
        return send(ends_[1], bytes.data(), bytes.size(), MSG_DONTWAIT) == static_cast<ssize_t>(bytes.size());
    }
    void end() const { shutdown(ends_[1], SHUT_WR); }
    int descriptor() const { return ends_[0]; }

private:
    std::array<int, 2> ends_{};
};

/// Puts each chunk of the input: its length and how often to repeat it, then its bytes. Returns what was put.
std::string putChunks(const Records& records, std::string_view input) {
    std::string put;
    for (std::size_t count = 0; input.size() > 2 && count < mostChunks; ++count) {
        const std::size_t length =
            std::min<std::size_t>(static_cast<unsigned char>(input[0]) + 1U, input.size() - 2);
        const std::size_t repetitions = static_cast<unsigned char>(input[1]) + 1U;
        std::string chunk;
        for (std::size_t i = 0; i < repetitions && chunk.size() + length <= largestChunk; ++i)
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

struct OwnedLine {
    LineReader::Line line;
    std::size_t number;
};

} // namespace
} // namespace tavel

/// Reads the chunks as lines. An owned line must stay as it was while the reader goes on.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavel;
    const Records records;
    const std::vector<std::string> expected = linesOf(putChunks(records, inputText(data, size)));
    records.end();

    std::vector<OwnedLine> owned;
    std::size_t number = 0;
    {
        LineReader reader(records.descriptor());
        while (auto line = reader.next()) {
            require(number < expected.size() && std::ranges::equal(line->text, expected[number]));
            require((line->owner != nullptr) == (line->text.size() >= LineReader::ownedLineBytes));
            for (std::size_t i = 0; i < LineReader::padding; ++i) // may be read
                static_cast<void>(*const_cast<volatile char*>(line->text.data() + line->text.size() + i));
            if (line->owner != nullptr)
                owned.push_back({std::move(*line), number});
            else
                std::ranges::fill(line->text, '\n'); // may be changed
            ++number;
        }
        require(!reader.next());
    }
    require(number == expected.size());
    for (const OwnedLine& one : owned)
        require(std::ranges::equal(one.line.text, expected[one.number]));
    return 0;
}
