#include "Tests/Mac/Double/ImageFiles.h"

#include "Tests/Mac/Double/CoreArray.h"
#include "Tests/Mac/Double/CoreData.h"
#include "Tests/Mac/Double/CoreObjects.h"

#include <ImageIO/ImageIO.h>

#include <cstddef>
#include <utility>
#include <vector>

using namespace tavel::doubles;

const CFStringRef kCGImageDestinationLossyCompressionQuality =
    CFSTR("kCGImageDestinationLossyCompressionQuality");
const CFStringRef kCGImagePropertyPixelWidth = CFSTR("PixelWidth");
const CFStringRef kCGImagePropertyPixelHeight = CFSTR("PixelHeight");
const CFStringRef kCGImagePropertyHasAlpha = CFSTR("HasAlpha");

namespace {

struct Source final : Object {
    static constexpr Kind ofKind = imageSourceKind;
    explicit Source(CFDataRef itsData) : Object(ofKind), data(itsData) {}
    const Reference data;
    Reference type;
};

/// Decoded only when its pixels are needed.
struct Image final : Object {
    static constexpr Kind ofKind = imageKind;
    explicit Image(CFTypeRef itsSource) : Object(ofKind), source(itsSource) {}
    const Reference source;
};

struct Added {
    Reference image;
    Reference properties;
};

struct Destination final : Object {
    static constexpr Kind ofKind = imageDestinationKind;
    Destination(CFDataRef itsData, CFStringRef itsType, std::size_t itsCount)
        : Object(ofKind), data(itsData), type(itsType), count(itsCount) {}
    const Reference data;
    const Reference type;
    const std::size_t count;
    std::vector<Added> added;
    bool isFinal = false;
};

std::string asciiOf(CFTypeRef string) {
    const std::u16string text = textOf(static_cast<CFStringRef>(string));
    return {text.begin(), text.end()};
}

/// Whether the process may decode files of the type that the test prescribes.
bool isAllowed() {
    const ImageFiles& files = imageFiles();
    return !files.allowedTypes || (files.type && files.allowedTypes->contains(*files.type));
}

/// Reads the file's bytes now, as late as ImageIO may.
std::string fileOf(const Image& image) {
    const auto& data = objectAt<Data>(objectAt<Source>(image.source.get()).data.get());
    return {reinterpret_cast<const char*>(data.bytes()), static_cast<std::size_t>(data.size())};
}

std::optional<double> qualityIn(CFTypeRef properties) {
    if (properties == nullptr)
        return std::nullopt;
    const void* const number = CFDictionaryGetValue(static_cast<CFDictionaryRef>(properties),
                                                    kCGImageDestinationLossyCompressionQuality);
    double quality = 0;
    if (number == nullptr ||
        CFNumberGetValue(static_cast<CFNumberRef>(number), kCFNumberDoubleType, &quality) == 0)
        return std::nullopt;
    return quality;
}

} // namespace

namespace tavel::doubles {

ImageFiles& imageFiles() {
    static ImageFiles files;
    return files;
}

void resetImageFiles() {
    imageFiles() = {};
}

std::string encodedText(const std::string& type, const std::string& file, std::optional<double> quality) {
    return type + " of " + file + (quality ? " with " + std::to_string(*quality) : std::string());
}

} // namespace tavel::doubles

CGImageSourceRef CGImageSourceCreateWithData(CFDataRef data, CFDictionaryRef) {
    imageFiles().openedBytes = objectAt<Data>(data).bytes();
    if (!imageFiles().opens)
        return nullptr;
    auto& source = *new Source(data);
    if (const auto& type = imageFiles().type; type && isAllowed())
        source.type = Reference::to(createObject(*type));
    return refTo<CGImageSourceRef>(source);
}

/// The source owns the result.
CFStringRef CGImageSourceGetType(CGImageSourceRef source) {
    return static_cast<CFStringRef>(objectAt<Source>(source).type.get());
}

CFDictionaryRef CGImageSourceCopyPropertiesAtIndex(CGImageSourceRef source, size_t index, CFDictionaryRef) {
    objectAt<Source>(source);
    const auto& properties = imageFiles().properties;
    if (!properties || index != 0 || !isAllowed())
        return nullptr;
    std::vector<Reference> held;
    std::vector<const void*> keys;
    std::vector<const void*> values;
    for (const auto& [key, value] : *properties) {
        keys.push_back(held.emplace_back(Reference::to(createObject(key))).get());
        values.push_back(held.emplace_back(Reference::to(createObject(value))).get());
    }
    return CFDictionaryCreate(kCFAllocatorDefault, keys.data(), values.data(),
                              static_cast<CFIndex>(keys.size()), &kCFTypeDictionaryKeyCallBacks,
                              &kCFTypeDictionaryValueCallBacks);
}

CGImageRef CGImageSourceCreateImageAtIndex(CGImageSourceRef source, size_t index, CFDictionaryRef) {
    const Object& holder = objectAt<Source>(source);
    return imageFiles().decodes && index == 0 && isAllowed() ? refTo<CGImageRef>(*new Image(&holder))
                                                             : nullptr;
}

OSStatus CGImageSourceSetAllowableTypes(CFArrayRef allowableTypes) {
    auto& allowed = imageFiles().allowedTypes.emplace();
    for (const CFTypeRef type : objectAt<Array>(allowableTypes).values)
        allowed.insert(textOf(static_cast<CFStringRef>(type)));
    return 0;
}

CGImageDestinationRef CGImageDestinationCreateWithData(CFMutableDataRef data, CFStringRef type, size_t count,
                                                       CFDictionaryRef) {
    objectAt<Data>(data);
    if (!imageFiles().encoders.contains(textOf(type)) || count == 0)
        return nullptr;
    return refTo<CGImageDestinationRef>(*new Destination(data, type, count));
}

void CGImageDestinationAddImage(CGImageDestinationRef destination, CGImageRef image,
                                CFDictionaryRef properties) {
    objectAt<Image>(image);
    objectAt<Destination>(destination).added.push_back({Reference(image), Reference(properties)});
}

/// Succeeds once, with the announced number of images. If it fails, the data holds an incomplete file.
bool CGImageDestinationFinalize(CGImageDestinationRef destination) {
    auto& writing = objectAt<Destination>(destination);
    if (writing.isFinal || writing.added.size() != writing.count)
        return false;
    writing.isFinal = true;
    std::string& written = objectAt<Data>(writing.data.get()).own;
    for (const Added& added : writing.added)
        written += encodedText(asciiOf(writing.type.get()), fileOf(objectAt<Image>(added.image.get())),
                               qualityIn(added.properties.get()));
    if (!imageFiles().finishes)
        written.resize(written.size() / 2);
    imageFiles().writtenBytes = written.data();
    return imageFiles().finishes;
}
