#include "TavelClipboardAgent/FilePaste/FileDataSearch.h"

#include "Platform/PasteboardTypes.h"
#include "TavelClipboardAgent/Formats/ValidRepresentation.h"
#include "TavelClipboardAgent/main/Images.h"
#include "TavelClipboardAgent/main/Limits.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {

namespace {

/// The longest side of a picture that becomes a file, in pixels.
constexpr std::int64_t maximumImageSide = 32'768;

constexpr double jpegQuality = 0.9;

bool fits(FormatKind kind, const Bytes& data) {
    return data.size() <= maximumBytes(kind);
}

bool isPastedAsItIs(const ClipboardFormat& format, const Bytes& data) {
    return format.pasting == FilePasting::asItIsIfValid ? validRepresentation(format.name, data.view())
                                                        : fits(format.kind, data);
}

const ClipboardFormat* formatOf(std::string_view type) {
    return std::ranges::find(clipboardFormats, type, &ClipboardFormat::type);
}

bool hasAllowedSize(const ImageSize& size) {
    return size.width >= 1 && size.height >= 1 && size.width <= maximumImageSide &&
           size.height <= maximumImageSide && size.width * size.height <= maximumImagePixels;
}

} // namespace

std::shared_ptr<FileDataSearch> FileDataSearch::start(Pasteboard& board, ImageCodec& codec, Done done) {
    const std::shared_ptr<FileDataSearch> search(new FileDataSearch(board, codec, std::move(done)));
    search->listCandidates();
    search->gatherNext();
    return search->done_ ? search : nullptr;
}

/// What is pasted as it is comes first, then the plain picture, then the text.
void FileDataSearch::listCandidates() {
    const std::vector<std::string> types = board_.types();
    for (const ClipboardFormat& format : clipboardFormats) {
        const bool isAsItIs =
            format.pasting == FilePasting::asItIs || format.pasting == FilePasting::asItIsIfValid;
        if (isAsItIs && pasteboardType::isOffered(types, format.type))
            candidates_.push_back(&format);
    }
    for (const std::string_view type : offeredPlainPictures(types))
        candidates_.push_back(formatOf(type));
    if (pasteboardType::isOffered(types, pasteboardType::string))
        candidates_.push_back(formatOf(pasteboardType::string));
}

void FileDataSearch::gatherNext() {
    if (candidates_.empty()) {
        finish(Error("Tavel", 4, "Nothing on the pasteboard can become a file."));
        return;
    }
    const ClipboardFormat& next = *candidates_.front();
    auto gathering = board_.gather({{std::string(next.type), maximumBytes(next.kind)}},
                                   [weak = weak_from_this()](bool isCurrent) {
                                       if (const auto self = weak.lock())
                                           self->tryNext(isCurrent);
                                   });
    // Without one, the value has been tried already, and the next one may be on its way.
    if (gathering != nullptr)
        gathering_ = std::move(gathering);
}

void FileDataSearch::tryNext(bool isCurrent) {
    gathering_.reset();
    if (!isCurrent) {
        finish(GivenUp());
        return;
    }
    try {
        const ClipboardFormat& format = *candidates_.front();
        candidates_.pop_front();
        if (auto file = fileFrom(format))
            finish(*std::move(file));
        else
            gatherNext();
    } catch (Error& error) {
        finish(std::move(error));
    } catch (const std::exception&) {
        finish(GivenUp());
    }
}

/// nullopt if the representation was not delivered, or cannot become a file.
std::optional<FileData> FileDataSearch::fileFrom(const ClipboardFormat& format) {
    const std::size_t limit = maximumBytes(format.kind);
    auto data = format.pasting == FilePasting::asText ? board_.string(format.type, limit)
                                                      : board_.data(format.type, limit);
    if (!data)
        return std::nullopt;
    if (format.pasting == FilePasting::encodedAnew) {
        // Only one picture is tried, whatever becomes of it.
        std::erase_if(candidates_, [](const ClipboardFormat* other) {
            return other->pasting == FilePasting::encodedAnew;
        });
        return encodedPicture(*data);
    }
    if (!isPastedAsItIs(format, *data))
        return std::nullopt;
    return FileData{*std::move(data), std::string(format.fileExtensions.front())};
}

/// Encoding the picture anew makes the content agree with the extension, and leaves out metadata.
std::optional<FileData> FileDataSearch::encodedPicture(const Bytes& data) {
    if (!fits(FormatKind::picture, data))
        return std::nullopt;
    const auto size = codec_.measure(data);
    if (!size || !hasAllowedSize(*size))
        return std::nullopt;
    const bool asPng = codec_.hasAlpha(data).value_or(false);
    if (!codec_.canEncode(asPng ? "public.png" : "public.jpeg"))
        throw Error("Tavel", 3, "Pictures cannot be encoded here.");
    auto encoded = asPng ? codec_.encodePng(data) : codec_.encodeJpeg(data, jpegQuality);
    if (!encoded || !fits(FormatKind::picture, *encoded))
        return std::nullopt;
    return FileData{*std::move(encoded), asPng ? "png" : "jpg"};
}

void FileDataSearch::finish(Outcome outcome) {
    if (const Done done = std::exchange(done_, nullptr))
        done(std::move(outcome));
}

} // namespace tavel
