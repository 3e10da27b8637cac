#include "Tests/Mac/Double/ConstantString.h"

#include "Tests/Mac/Double/CoreObjects.h"

#include <cstddef>

/// The compiler's constant strings begin with the address of this class.
extern "C" const int __CFConstantStringClassReference[1] = {};

namespace tavel::doubles {

namespace {

constexpr int ofBytes = 0x7C8;

struct Layout {
    const void* classReference;
    int flags;
    const char* text;
    long length;
};

const Layout& layoutOf(CFTypeRef string) {
    return *static_cast<const Layout*>(string);
}

} // namespace

bool isConstantString(CFTypeRef object) {
    return layoutOf(object).classReference == __CFConstantStringClassReference;
}

std::string_view constantText(CFTypeRef constantString) {
    const Layout& layout = layoutOf(constantString);
    if (layout.flags != ofBytes)
        refuse("The double reads constant strings in ASCII only.");
    return {layout.text, static_cast<std::size_t>(layout.length)};
}

} // namespace tavel::doubles
