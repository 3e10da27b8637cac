#include "Support/Base64.h"
#include "Support/Text.h"
#include "TavelClipboardAgent/Formats/ValidRepresentation.h"
#include "TavelClipboardAgent/main/Protocol/Encoder.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

namespace tavel {
namespace {

constexpr std::size_t textBytes = std::size_t{4} << 20;

/// French prose: about one byte in fifteen belongs to an accented letter.
std::string frenchText(std::size_t size) {
    const std::string sentence =
        "Le cœur déçu mais l'âme plutôt naïve, Louÿs rêva de crapaüter en canoë au delà "
        "des îles, près du mälström où brûlent les novæ.\n";
    std::string text;
    text.reserve(size + sentence.size());
    while (text.size() < size)
        text += sentence;
    // Ends after a sentence and is padded with spaces, so that no character is cut.
    text.resize(size / sentence.size() * sentence.size());
    text.resize(size, ' ');
    return text;
}

void setBytesPerSecond(benchmark::State& state, std::size_t bytes) {
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
}

/// The lower bound for everything that writes a result of this size.
void copyText(benchmark::State& state) {
    const std::string text = frenchText(textBytes);
    std::vector<char> target(text.size());
    for ([[maybe_unused]] auto _ : state) {
        std::memcpy(target.data(), text.data(), text.size());
        benchmark::ClobberMemory();
    }
    setBytesPerSecond(state, text.size());
}
BENCHMARK(copyText);

void checkUtf8(benchmark::State& state) {
    const std::string text = frenchText(textBytes);
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(isUtf8(text));
    setBytesPerSecond(state, text.size());
}
BENCHMARK(checkUtf8);

/// The check of every text and HTML page before it is exported or written.
void checkTextFormat(benchmark::State& state) {
    const std::string text = frenchText(textBytes);
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(validRepresentation("text.txt", text));
    setBytesPerSecond(state, text.size());
}
BENCHMARK(checkTextFormat);

void encodeBase64Text(benchmark::State& state) {
    const std::string text = frenchText(textBytes);
    for ([[maybe_unused]] auto _ : state) {
        std::string encoded;
        appendBase64(encoded, text);
        benchmark::DoNotOptimize(encoded);
    }
    setBytesPerSecond(state, text.size());
}
BENCHMARK(encodeBase64Text);

void decodeBase64Text(benchmark::State& state) {
    std::string encoded;
    appendBase64(encoded, frenchText(textBytes));
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(decodeBase64(encoded));
    setBytesPerSecond(state, encoded.size());
}
BENCHMARK(decodeBase64Text);

/// All the work on a captured text before the event is written.
void buildTextEvent(benchmark::State& state) {
    const Bytes text = Bytes::adopt(frenchText(textBytes));
    for ([[maybe_unused]] auto _ : state) {
        if (!isUtf8(text.view()))
            state.SkipWithError("the text is not UTF-8");
        benchmark::DoNotOptimize(encodeMessage(event::TextChange{text, "", 1}));
    }
    setBytesPerSecond(state, text.size());
}
BENCHMARK(buildTextEvent);

} // namespace
} // namespace tavel
