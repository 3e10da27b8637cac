#include "Mac/ImageSource.h"

#include "Mac/CoreStrings.h"

namespace tavel {

namespace {

std::optional<double> numberIn(CFDictionaryRef dictionary, CFStringRef key) {
    const CFTypeRef value = CFDictionaryGetValue(dictionary, key);
    double number = 0;
    if (value == nullptr || CFGetTypeID(value) != CFNumberGetTypeID() ||
        CFNumberGetValue(static_cast<CFNumberRef>(value), kCFNumberDoubleType, &number) == 0)
        return std::nullopt;
    return number;
}

std::optional<bool> flagIn(CFDictionaryRef dictionary, CFStringRef key) {
    const CFTypeRef value = CFDictionaryGetValue(dictionary, key);
    if (value == nullptr || CFGetTypeID(value) != CFBooleanGetTypeID())
        return std::nullopt;
    return CFBooleanGetValue(static_cast<CFBooleanRef>(value)) != 0;
}

CFRef<CFDataRef> dataOver(const Bytes& file) {
    return CFRef<CFDataRef>::adopt(
        CFDataCreateWithBytesNoCopy(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(file.data()),
                                    static_cast<CFIndex>(file.size()), kCFAllocatorNull));
}

} // namespace

ImageSource::ImageSource(const Bytes& file) : file_(file) {
    if (file.empty())
        return;
    data_ = dataOver(file);
    if (data_)
        source_ = CFRef<CGImageSourceRef>::adopt(CGImageSourceCreateWithData(data_.get(), nullptr));
}

std::optional<std::string> ImageSource::typeIdentifier() const {
    if (!source_)
        return std::nullopt;
    return utf8FromObject(CGImageSourceGetType(source_.get()));
}

std::optional<ImageProperties> ImageSource::properties() const {
    if (!source_)
        return std::nullopt;
    const auto found =
        CFRef<CFDictionaryRef>::adopt(CGImageSourceCopyPropertiesAtIndex(source_.get(), 0, nullptr));
    if (!found)
        return std::nullopt;
    return ImageProperties{numberIn(found.get(), kCGImagePropertyPixelWidth),
                           numberIn(found.get(), kCGImagePropertyPixelHeight),
                           flagIn(found.get(), kCGImagePropertyHasAlpha)};
}

CFRef<CGImageRef> ImageSource::image() const {
    if (!source_)
        return {};
    return CFRef<CGImageRef>::adopt(CGImageSourceCreateImageAtIndex(source_.get(), 0, nullptr));
}

} // namespace tavel
