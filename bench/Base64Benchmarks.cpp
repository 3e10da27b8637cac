#include "Support/Base64Blocks.h"

#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <string_view>

namespace tavel {
namespace {

/// Room of any size, as far from the input as it has to be: processors wrongly take a load to depend on a
/// store shortly before if the addresses are equal modulo 4096.
class Output {
public:
    Output(std::string_view input, std::size_t size) : buffer_(size + page, '\0') {
        start_ = buffer_.data() +
                 static_cast<std::size_t>(input.data() - buffer_.data() + std::ptrdiff_t{page / 2}) % page;
    }

    char* start() const { return start_; }

private:
    static constexpr std::size_t page = 4096;

    std::string buffer_;
    char* start_;
};

std::string randomBytes(std::size_t size) {
    std::string bytes(size, '\0');
    std::mt19937 random(1);
    for (char& byte : bytes)
        byte = static_cast<char>(static_cast<unsigned char>(random() & 0xFF));
    return bytes;
}

std::string encoded(std::string_view bytes) {
    std::string text(bytes.size() / 3 * 4, '\0');
    encodeBase64Groups(bytes, text.data());
    return text;
}

std::string withEscapes(std::string_view text) {
    std::string escaped(2 * text.size(), '\0');
    escaped.resize(static_cast<std::size_t>(copyWithSlashEscapes(text, escaped.data()) - escaped.data()));
    return escaped;
}

/// One argument is the kind of vector, the last of which is none. The other is the number of characters: in
/// the first-level cache, or many more.
void eachKind(benchmark::internal::Benchmark* benchmark) {
    for (std::size_t kind = 0; kind < base64Blocks().size(); ++kind) {
        for (const std::int64_t characters : {4096, 4 << 20}) {
            if (base64Blocks()[kind].runHere())
                benchmark->Args({static_cast<std::int64_t>(kind), characters});
        }
    }
}

void measure(benchmark::State& state, const std::string& input, const auto& loop) {
    const Base64Blocks& kind = base64Blocks()[static_cast<std::size_t>(state.range(0))];
    const Output out(input, 2 * input.size());
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(loop(kind, input, out.start()));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(input.size()) * state.iterations());
    state.SetLabel(kind.name);
}

std::size_t charactersOf(const benchmark::State& state) {
    return static_cast<std::size_t>(state.range(1));
}

void encodeGroups(benchmark::State& state) {
    measure(state, randomBytes(charactersOf(state) / 4 * 3),
            [](auto& kind, auto& bytes, char* out) { return encodeBase64Groups(kind, bytes, out); });
}
BENCHMARK(encodeGroups)->Apply(eachKind);

void decodeGroups(benchmark::State& state) {
    measure(state, encoded(randomBytes(charactersOf(state) / 4 * 3)),
            [](auto& kind, auto& text, char* out) { return decodeBase64Groups(kind, text, out); });
}
BENCHMARK(decodeGroups)->Apply(eachKind);

/// One character in 64 is a slash.
void addEscapes(benchmark::State& state) {
    measure(state, encoded(randomBytes(charactersOf(state) / 4 * 3)),
            [](auto& kind, auto& text, char* out) { return copyWithSlashEscapes(kind, text, out); });
}
BENCHMARK(addEscapes)->Apply(eachKind);

void removeEscapes(benchmark::State& state) {
    measure(
        state, withEscapes(encoded(randomBytes(charactersOf(state) / 4 * 3))),
        [](auto& kind, auto& text, char* out) { return copyWithoutSlashEscapes(kind, text, out).written; });
}
BENCHMARK(removeEscapes)->Apply(eachKind);

void addEscapesToSlashesAlone(benchmark::State& state) {
    measure(state, std::string(charactersOf(state), '/'),
            [](auto& kind, auto& text, char* out) { return copyWithSlashEscapes(kind, text, out); });
}
BENCHMARK(addEscapesToSlashesAlone)->Apply(eachKind);

void removeEscapesOfSlashesAlone(benchmark::State& state) {
    measure(state, withEscapes(std::string(charactersOf(state), '/')), [](auto& kind, auto& text, char* out) {
        return copyWithoutSlashEscapes(kind, text, out).written;
    });
}
BENCHMARK(removeEscapesOfSlashesAlone)->Apply(eachKind);

} // namespace
} // namespace tavel
