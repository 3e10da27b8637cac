#include <hwy/highway.h>
#include <simdjson.h>
#include <utf8proc.h>

int main() {
    return HWY_ONCE == 1 && simdjson::validate_utf8("\xC3\xA9", 2) && utf8proc_toupper(0xE9) == 0xC9 ? 0 : 1;
}
