#pragma once

#include "Tests/Mac/Double/CoreValues.h"

#include <map>
#include <optional>
#include <set>
#include <string>

/// Stands in for ImageIO: whatever the file, it finds in it what the test says.
namespace tavel::doubles {

struct ImageFiles {
    bool opens = true; // a source is made even for most of what is no image
    std::optional<std::u16string> type;
    std::optional<std::map<std::u16string, Value>> properties; // by their keys
    bool decodes = true;
    bool finishes = true; // what is encoded
    std::set<std::u16string> encoders{u"public.jpeg", u"public.png"};

    const void* openedBytes = nullptr;  // those of the last source
    const void* writtenBytes = nullptr; // those of the last destination
};

ImageFiles& imageFiles();

/// What the encoder makes of a file: it tells what there was to encode, and how.
std::string encodedText(const std::string& type, const std::string& file, std::optional<double> quality);

void resetImageFiles();

} // namespace tavel::doubles
