#include "Tests/Unit/Fixtures/PrintJson.h"

#include <ostream>

namespace nlohmann {

void PrintTo(const json& value, std::ostream* stream) {
    *stream << value.dump(-1, ' ', false, json::error_handler_t::replace);
}

} // namespace nlohmann
