#include "Linux/Images/Program/Preparation.h"

#include "Linux/Images/Program/BmpDecoder.h"
#include "Linux/Images/Program/VipsRuntime.h"

#include <ctime>

namespace tavel {

bool prepareForType(std::string_view typeIdentifier) {
    tzset(); // colour profiles carry times, and the C library opens a file before it tells one
    if (!startVips())
        return false;
    if (typeIdentifier == "com.microsoft.bmp")
        return loadBmpLoader();
    if (typeIdentifier == "public.heif" || typeIdentifier == "public.heic" || typeIdentifier == "public.avif")
        return loadHeifPlugin();
    return true; // libvips itself links the libraries of the others
}

} // namespace tavel
