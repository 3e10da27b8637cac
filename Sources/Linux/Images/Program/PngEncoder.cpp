#include "Linux/Images/Program/PngEncoder.h"

#include "Linux/Images/Program/PixelRows.h"
#include "Linux/Images/Program/PngWriter.h"

namespace tavel {

bool encodeAsPng(const PlainPixels& pixels, bool mayHaveFewColours, ImageOutput& output) {
    VipsImage* const image = pixels.image.get();
    PngWriter writer(rowLayout(image), pixels.profile, mayHaveFewColours, output);
    return forEachRow(image, [&](const std::uint8_t* row) { return writer.take(row); }) && writer.finish();
}

} // namespace tavel
