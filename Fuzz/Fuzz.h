#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

/// Each fuzzer's entry. libFuzzer or CorpusRunner.cpp calls it once for each input. It aborts when the code
/// under test breaks a promise.
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
