#include "TavelClipboardAgent/Formats/ValidRepresentation.h"

#include "TavelClipboardAgent/Formats/ClipboardFormats.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {
namespace {

using namespace std::string_literals;

constexpr std::size_t mostText = 4'194'304;
constexpr std::size_t mostOther = 134'217'728;

struct Signature {
    std::string_view format;
    std::string start;
};

/// The formats that are recognised by their first bytes alone.
const std::vector<Signature>& signatures() {
    static const std::vector<Signature> all{{"document.pdf", "%PDF-"},
                                            {"image.png", "\x89PNG\x0D\x0A\x1A\x0A"},
                                            {"image.gif", "GIF87a"},
                                            {"image.gif", "GIF89a"},
                                            {"image.jpeg", "\xFF\xD8\xFF"},
                                            {"image.tiff", "\x49\x49\x2A\x00"s},
                                            {"image.tiff", "\x4D\x4D\x00\x2A"s}};
    return all;
}

bool isSignatureOf(std::string_view format, std::string_view start) {
    return std::ranges::any_of(signatures(), [&](const Signature& signature) {
        return signature.format == format && signature.start == start;
    });
}

/// The shortest valid content of that format.
std::string leastOf(std::string_view format) {
    for (const Signature& signature : signatures()) {
        if (signature.format == format)
            return signature.start;
    }
    if (format == "image.webp")
        return "RIFF\x04\0\0\0WEBP"s;
    if (format == "image.svg")
        return "<svg";
    return format == "text.rtf" ? "{\\rtf" : "t";
}

bool isText(std::string_view format) {
    return format.starts_with("text.");
}

TEST(ClipboardFormats, areTheseTenInThisOrder) {
    const std::vector<std::pair<std::string_view, std::string_view>> expected{
        {"document.pdf", "com.adobe.pdf"}, {"image.gif", "com.compuserve.gif"},
        {"image.svg", "public.svg-image"}, {"image.webp", "org.webmproject.webp"},
        {"image.tiff", "public.tiff"},     {"image.jpeg", "public.jpeg"},
        {"image.png", "public.png"},       {"text.rtf", "public.rtf"},
        {"text.html", "public.html"},      {"text.txt", "public.utf8-plain-text"},
    };
    std::vector<std::pair<std::string_view, std::string_view>> all;
    for (const ClipboardFormat& format : clipboardFormats)
        all.emplace_back(format.name, format.type);
    EXPECT_EQ(all, expected);
}

TEST(ClipboardFormats, areFoundByTheirExactNames) {
    for (const ClipboardFormat& format : clipboardFormats)
        EXPECT_EQ(findClipboardFormat(format.name), &format);
    for (const std::string_view name : {"", "image.bmp", "TEXT.TXT", "Image.png", "text.htm", "text.html ",
                                        " text.html", "text", "html", "public.html"})
        EXPECT_EQ(findClipboardFormat(name), nullptr) << name;
    EXPECT_EQ(findClipboardFormat("text.txt\0"s), nullptr);
}

TEST(ClipboardFormats, holdAtMost128MebibytesTogether) {
    EXPECT_EQ(maximumFormatsBytes, std::size_t{128} * 1024 * 1024);
}

TEST(ValidRepresentation, takesTheShortestContentOfEveryFormat) {
    for (const ClipboardFormat& format : clipboardFormats)
        EXPECT_TRUE(validRepresentation(format.name, leastOf(format.name))) << format.name;
}

TEST(ValidRepresentation, refusesUnknownNames) {
    for (const ClipboardFormat& format : clipboardFormats) {
        const std::string least = leastOf(format.name);
        for (const std::string_view name :
             {"", "image.bmp", "TEXT.TXT", "Image.png", "image.jpg", "image.tif", "text.htm", "document.PDF"})
            EXPECT_FALSE(validRepresentation(name, least)) << name;
        EXPECT_FALSE(validRepresentation(std::string(format.name) + '\0', least)) << format.name;
        EXPECT_FALSE(validRepresentation(format.name.substr(1), least)) << format.name;
    }
}

TEST(ValidRepresentation, refusesEmptyData) {
    for (const ClipboardFormat& format : clipboardFormats) {
        EXPECT_FALSE(validRepresentation(format.name, "")) << format.name;
        EXPECT_FALSE(validRepresentation(format.name, {})) << format.name;
    }
}

TEST(ValidRepresentation, takesTextOf4MebibytesAndNotAByteMore) {
    for (const ClipboardFormat& format : clipboardFormats) {
        std::string data = leastOf(format.name);
        data.resize(mostText, 'x');
        EXPECT_TRUE(validRepresentation(format.name, data)) << format.name;
        data += 'x';
        EXPECT_EQ(validRepresentation(format.name, data), !isText(format.name)) << format.name;
    }
}

TEST(ValidRepresentation, takesEverythingElseOf128MebibytesAndNotAByteMore) {
    std::string data(mostOther + 1, 'x');
    for (const ClipboardFormat& format : clipboardFormats) {
        data.replace(0, 12, 12, 'x');
        const std::string least = leastOf(format.name);
        data.replace(0, least.size(), least);
        EXPECT_FALSE(validRepresentation(format.name, data)) << format.name;
        EXPECT_EQ(validRepresentation(format.name, std::string_view(data).substr(0, mostOther)),
                  !isText(format.name))
            << format.name;
    }
}

TEST(ValidRepresentation, takesASignatureWithAnythingBehindIt) {
    for (const auto& [format, start] : signatures()) {
        EXPECT_TRUE(validRepresentation(format, start + '\0')) << format;
        EXPECT_TRUE(validRepresentation(format, start + "\xFF\xFE\x80 anything")) << format;
    }
}

TEST(ValidRepresentation, refusesTheSignatureOfAnotherFormat) {
    for (const auto& [format, start] : signatures()) {
        for (const Signature& other : signatures())
            EXPECT_EQ(validRepresentation(other.format, start), other.format == format) << other.format;
        for (const std::string_view other : {"image.webp", "image.svg", "text.rtf"})
            EXPECT_FALSE(validRepresentation(other, start)) << format << " as " << other;
    }
}

TEST(ValidRepresentation, refusesASignatureThatIsCutShort) {
    for (const auto& [format, start] : signatures()) {
        for (std::size_t size = 0; size < start.size(); ++size)
            EXPECT_FALSE(validRepresentation(format, std::string_view(start).substr(0, size)))
                << format << " cut to " << size;
    }
}

TEST(ValidRepresentation, refusesASignatureWithAnyOtherByteAnywhere) {
    for (const auto& [format, start] : signatures()) {
        for (std::size_t position = 0; position < start.size(); ++position) {
            for (int value = 0; value < 256; ++value) {
                std::string changed = start;
                changed[position] = static_cast<char>(static_cast<unsigned char>(value));
                EXPECT_EQ(validRepresentation(format, changed + "more"), isSignatureOf(format, changed))
                    << format << ": " << value << " at " << position;
            }
        }
    }
}

TEST(ValidRepresentation, refusesASignatureBehindSomethingElse) {
    for (const auto& [format, start] : signatures()) {
        EXPECT_FALSE(validRepresentation(format, " " + start)) << format;
        EXPECT_FALSE(validRepresentation(format, "\xEF\xBB\xBF" + start)) << format;
    }
}

TEST(ValidRepresentation, takesWebpOfAtLeast12Bytes) {
    const std::string webp = "RIFF\x1A\0\0\0WEBPVP8L"s;
    for (std::size_t size = 0; size <= webp.size(); ++size)
        EXPECT_EQ(validRepresentation("image.webp", std::string_view(webp).substr(0, size)), size >= 12)
            << size;
}

TEST(ValidRepresentation, takesWebpWithAnyLengthInItsContainer) {
    for (const std::string& length :
         {"\0\0\0\0"s, "\xFF\xFF\xFF\xFF"s, "\x04\0\0\0"s, "\0\0\0\x80"s, "WEBP"s})
        EXPECT_TRUE(validRepresentation("image.webp", "RIFF" + length + "WEBP"));
}

TEST(ValidRepresentation, refusesWebpWithAnyOtherByteInItsTwoNames) {
    const std::string webp = "RIFF\0\0\0\0WEBP"s;
    for (const std::size_t position : {0U, 1U, 2U, 3U, 8U, 9U, 10U, 11U}) {
        for (int change = 1; change < 256; ++change) {
            std::string changed = webp;
            changed[position] = static_cast<char>(static_cast<unsigned char>(changed[position] ^ change));
            EXPECT_FALSE(validRepresentation("image.webp", changed)) << change << " at " << position;
        }
    }
    EXPECT_FALSE(validRepresentation("image.webp", "RIFX\0\0\0\0WEBP"s));
    EXPECT_FALSE(validRepresentation("image.webp", "RIFF\0\0\0\0\0WEBP"s));
    EXPECT_FALSE(validRepresentation("image.webp", "RIFF\0\0\0\0WAVEWEBP"s));
}

} // namespace
} // namespace tavel
