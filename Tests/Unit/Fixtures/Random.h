#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <string>

namespace tavel {

/// The same numbers in every run and on every machine, so that a failure comes back.
class Random {
public:
    explicit Random(std::uint64_t seed) : engine_(seed) {}

    std::size_t below(std::size_t limit) { return static_cast<std::size_t>(engine_() % limit); }

    char byte() { return static_cast<char>(static_cast<unsigned char>(engine_() & 0xFF)); }

    std::string bytes(std::size_t size) {
        std::string content(size, '\0');
        for (char& c : content)
            c = byte();
        return content;
    }

    template <typename Value, std::size_t extent>
    const Value& oneOf(std::span<Value, extent> values) {
        return values[below(values.size())];
    }

private:
    std::mt19937_64 engine_;
};

} // namespace tavel
