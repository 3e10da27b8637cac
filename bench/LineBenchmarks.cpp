#include "Support/Files.h"
#include "Support/LineReader.h"
#include "Support/Throughput.h"
#include "TavelClipboardAgent/main/Protocol/CommandDecoder.h"

#include <benchmark/benchmark.h>
#include <openssl/evp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tavel {
namespace {

/// About the length of a line with the largest accepted image, 64 MiB, in base64.
constexpr std::size_t lineBytes = std::size_t{89'478'486};
constexpr std::size_t longestPayload = std::size_t{64} << 20;
constexpr std::string_view lineHead = R"({"command":"write_image_data","request_id":1,"image_b64":")";

/// A child process that writes one long command into a pipe. A thread would compete with the reader for the
/// page tables of the process.
class Writer {
public:
    Writer() {
        const std::string& text = line(); // built once, before the fork
        std::array<int, 2> ends{};
        if (pipe(ends.data()) != 0)
            std::abort();
        child_ = fork();
        if (child_ == 0) {
            close(ends[0]);
            _exit(writeAll(ends[1], text) ? 0 : 1);
        }
        close(ends[1]);
        readEnd_ = ends[0];
    }
    ~Writer() {
        close(readEnd_);
        waitpid(child_, nullptr, 0);
    }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    int readEnd() const { return readEnd_; }

private:
    static const std::string& line() {
        static const std::string text = [] {
            std::string command(lineHead);
            // One slash in 64 characters, escaped as JSON writers of the home platform do.
            while (command.size() < lineBytes)
                command += "iVBORw0KGgoAAAANSUhEUgAAB9AAAAfQCAYAAACaOMR5AAAACXBIWXMAAAsTAAA\\/";
            return command + "\"}\n";
        }();
        return text;
    }

    int readEnd_ = -1;
    pid_t child_ = -1;
};

void setBytesProcessed(benchmark::State& state) {
    state.SetBytesProcessed(static_cast<std::int64_t>(lineBytes) * state.iterations());
}

void readToEnd(int descriptor, char* target, std::size_t room) {
    std::size_t end = 0;
    for (;;) {
        const ssize_t count = read(descriptor, target + end, room - end);
        if (count <= 0)
            break;
        end += static_cast<std::size_t>(count);
    }
    benchmark::DoNotOptimize(target[end - 1]);
}

/// The lower bound: reads from the pipe into fresh memory, and nothing else.
void readPipeOnly(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        const Writer writer;
        auto* const target = static_cast<char*>(std::malloc(lineBytes + 4096));
        readToEnd(writer.readEnd(), target, lineBytes + 4096);
        std::free(target);
    }
    setBytesProcessed(state);
}
BENCHMARK(readPipeOnly)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2);

/// The lower bound for a reader that also enlarges the pipe and requests large pages.
void readPipeWithHints(benchmark::State& state) {
    constexpr std::size_t pageBytes = std::size_t{2} << 20;
    constexpr std::size_t room = (lineBytes / pageBytes + 1) * pageBytes;
    for ([[maybe_unused]] auto _ : state) {
        const Writer writer;
        enlargePipe(writer.readEnd());
        auto* const target = static_cast<char*>(std::aligned_alloc(pageBytes, room));
        preferLargePages(target, room);
        readToEnd(writer.readEnd(), target, room);
        std::free(target);
    }
    setBytesProcessed(state);
}
BENCHMARK(readPipeWithHints)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2);

/// With its payload decoded.
void readLine(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        const Writer writer;
        LineReader reader(writer.readEnd(), longestPayload);
        const auto line = reader.next();
        if (!line || !line->payload)
            state.SkipWithError("the line has no payload");
    }
    setBytesProcessed(state);
}
BENCHMARK(readLine)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2);

/// All the work on a picture before its format is checked.
void readAndDecodeLine(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        const Writer writer;
        LineReader reader(writer.readEnd(), longestPayload);
        CommandDecoder decoder;
        const auto line = reader.next();
        const auto command = line ? decoder.decode(*line) : std::nullopt;
        const auto* const write = command ? std::get_if<command::WriteImageData>(&*command) : nullptr;
        if (write == nullptr || !write->image || write->image->size() < lineBytes / 4 * 3 - 2'000'000)
            state.SkipWithError("the line carries no picture");
    }
    setBytesProcessed(state);
}
BENCHMARK(readAndDecodeLine)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2);

/// The same line, but as if it had no payload.
void readAndDecodeWholeLine(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        const Writer writer;
        LineReader reader(writer.readEnd(), longestPayload, LineReader::longestLineBytes);
        CommandDecoder decoder;
        const auto line = reader.next();
        if (!line || !decoder.decode(*line))
            state.SkipWithError("the line is no command");
    }
    setBytesProcessed(state);
}
BENCHMARK(readAndDecodeWholeLine)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2);

/// For comparison: the straightforward implementation.
void readAndDecodeTheObviousWay(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        const Writer writer;
        FILE* const stream = fdopen(dup(writer.readEnd()), "r");
        char* line = nullptr;
        std::size_t capacity = 0;
        const ssize_t length = getline(&line, &capacity, stream);
        const auto message = nlohmann::json::parse(line, line + std::max<ssize_t>(length, 0));
        const auto text = message["image_b64"].get<std::string>();
        std::vector<unsigned char> image(text.size() / 4 * 3);
        const int size = EVP_DecodeBlock(image.data(), reinterpret_cast<const unsigned char*>(text.data()),
                                         static_cast<int>(text.size() / 4 * 4));
        std::free(line);
        std::fclose(stream);
        if (size <= 0)
            state.SkipWithError("the line carries no base64");
    }
    setBytesProcessed(state);
}
BENCHMARK(readAndDecodeTheObviousWay)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

/// For comparison: the C library's getline.
void readWithGetline(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        const Writer writer;
        FILE* const stream = fdopen(dup(writer.readEnd()), "r");
        char* text = nullptr;
        std::size_t capacity = 0;
        benchmark::DoNotOptimize(getline(&text, &capacity, stream));
        std::free(text);
        std::fclose(stream);
    }
    setBytesProcessed(state);
}
BENCHMARK(readWithGetline)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2);

} // namespace
} // namespace tavel
