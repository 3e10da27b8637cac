#pragma once

#include "Tests/Mac/Double/CoreValues.h"

#include <map>
#include <optional>
#include <set>
#include <string>

/// A double of ImageIO: it finds in every file what the test prescribes.
namespace tavel::doubles {

struct ImageFiles {
    bool opens = true; // ImageIO makes a source even for most files that are no images
    std::optional<std::u16string> type;
    std::optional<std::map<std::u16string, Value>> properties; // by key
    bool decodes = true;
    bool finishes = true;                                 // whether encoding succeeds
    std::optional<std::set<std::u16string>> allowedTypes; // those that are decoded; all, if it is absent
    std::set<std::u16string> encoders{u"public.jpeg", u"public.png"};

    const void* openedBytes = nullptr;  // of the last source
    const void* writtenBytes = nullptr; // of the last destination
};

ImageFiles& imageFiles();

/// The encoder's output for a file: a text that states the input and the options.
std::string encodedText(const std::string& type, const std::string& file, std::optional<double> quality);

void resetImageFiles();

} // namespace tavel::doubles
