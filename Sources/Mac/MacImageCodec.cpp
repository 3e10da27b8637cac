#include "Mac/MacImageCodec.h"

#include "Mac/CFRef.h"
#include "Mac/ImageSource.h"

#include <ImageIO/ImageIO.h>

#include <cstddef>
#include <iterator>
#include <memory>

namespace tavel {

namespace {

/// Shares the data, which must not change any more, and keeps it alive.
Bytes bytesSharing(CFRef<CFMutableDataRef> data) {
    CFMutableDataRef object = data.get();
    const auto owner = std::make_shared<const CFRef<CFMutableDataRef>>(std::move(data));
    return {owner, reinterpret_cast<const char*>(CFDataGetBytePtr(object)),
            static_cast<std::size_t>(CFDataGetLength(object))};
}

/// Encodes the first image of the file in the format `type`. `options` may be null. nullopt on failure.
std::optional<Bytes> encode(const Bytes& file, CFStringRef type, CFDictionaryRef options) {
    const ImageSource source(file);
    const auto image = source.image();
    auto encoded = CFRef<CFMutableDataRef>::adopt(CFDataCreateMutable(kCFAllocatorDefault, 0));
    if (!image || !encoded)
        return std::nullopt;
    const auto destination = CFRef<CGImageDestinationRef>::adopt(
        CGImageDestinationCreateWithData(encoded.get(), type, 1, nullptr));
    if (!destination)
        return std::nullopt;
    CGImageDestinationAddImage(destination.get(), image.get(), options);
    if (!CGImageDestinationFinalize(destination.get()))
        return std::nullopt;
    return bytesSharing(std::move(encoded));
}

} // namespace

MacImageCodec::MacImageCodec() {
    // If it fails, ImageIO decodes all formats, as it does on older systems.
    if (__builtin_available(macOS 14.2, *)) {
        const void* types[] = {
            CFSTR("public.png"),         CFSTR("public.jpeg"),       CFSTR("public.tiff"),
            CFSTR("com.compuserve.gif"), CFSTR("com.microsoft.bmp"), CFSTR("org.webmproject.webp"),
            CFSTR("public.heic"),        CFSTR("public.heics"),      CFSTR("public.heif"),
            CFSTR("public.avif"),
            CFSTR("com.apple.icns"), // AppKit's own icons
        };
        const auto list = CFRef<CFArrayRef>::adopt(
            CFArrayCreate(kCFAllocatorDefault, types, std::size(types), &kCFTypeArrayCallBacks));
        if (list)
            static_cast<void>(CGImageSourceSetAllowableTypes(list.get()));
    }
}

std::optional<ImageSize> MacImageCodec::measure(const Bytes& file) {
    const auto properties = ImageSource(file).properties();
    return properties ? sizeFrom(*properties) : std::nullopt;
}

std::optional<std::string> MacImageCodec::typeIdentifier(const Bytes& file) {
    return ImageSource(file).typeIdentifier();
}

std::optional<bool> MacImageCodec::hasAlpha(const Bytes& file) {
    const auto properties = ImageSource(file).properties();
    if (!properties)
        return std::nullopt;
    return hasAlphaFrom(*properties);
}

bool MacImageCodec::canEncode(std::string_view typeIdentifier) {
    if (typeIdentifier.empty())
        return false;
    const auto type = CFRef<CFStringRef>::adopt(
        CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(typeIdentifier.data()),
                                static_cast<CFIndex>(typeIdentifier.size()), kCFStringEncodingUTF8, 0));
    const auto data = CFRef<CFMutableDataRef>::adopt(CFDataCreateMutable(kCFAllocatorDefault, 0));
    return type && data &&
           CFRef<CGImageDestinationRef>::adopt(
               CGImageDestinationCreateWithData(data.get(), type.get(), 1, nullptr));
}

std::optional<Bytes> MacImageCodec::encodePng(const Bytes& file) {
    return encode(file, CFSTR("public.png"), nullptr);
}

std::optional<Bytes> MacImageCodec::encodeJpeg(const Bytes& file, double quality) {
    const auto number =
        CFRef<CFNumberRef>::adopt(CFNumberCreate(kCFAllocatorDefault, kCFNumberDoubleType, &quality));
    const void* key = kCGImageDestinationLossyCompressionQuality;
    const void* value = number.get();
    const auto options = CFRef<CFDictionaryRef>::adopt(CFDictionaryCreate(kCFAllocatorDefault, &key, &value,
                                                                          1, &kCFTypeDictionaryKeyCallBacks,
                                                                          &kCFTypeDictionaryValueCallBacks));
    return encode(file, CFSTR("public.jpeg"), options.get());
}

} // namespace tavel
