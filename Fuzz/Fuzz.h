#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

/// The entry that each fuzzer defines and libFuzzer, or CorpusRunner.cpp, calls with one input after the
/// other. It aborts where a promise of the code under test is broken.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace tavel {

inline std::string_view inputText(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

inline void require(bool holds) {
    if (!holds)
        std::abort();
}

} // namespace tavel
