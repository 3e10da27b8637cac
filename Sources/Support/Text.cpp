#include "Support/Text.h"

#include <simdjson.h>

namespace tavel {

bool isUtf8(std::string_view bytes) {
    return simdjson::validate_utf8(bytes.data(), bytes.size());
}

} // namespace tavel
