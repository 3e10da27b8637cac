#pragma once

#include <iosfwd>
#include <nlohmann/json.hpp>

namespace nlohmann {

/// How GoogleTest shows JSON. Not left to its own printer, with which every object file of the tests would
/// take in the library's whole writer: most of the time that compiling them took.
void PrintTo(const json& value, std::ostream* stream);

} // namespace nlohmann
