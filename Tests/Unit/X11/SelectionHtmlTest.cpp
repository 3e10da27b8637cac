#include "Linux/Contents/SelectionText.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace tavel {
namespace {

std::string html(std::string_view bytes) {
    return std::string(htmlOf({"text/html", "text/html", 8, Bytes::copyOf(bytes)}).view());
}

const std::string littleEndianMark = "\xFF\xFE";
const std::string bigEndianMark = "\xFE\xFF";

std::string littleEndian(std::u16string_view text) {
    std::string bytes;
    for (const char16_t unit : text)
        bytes += {static_cast<char>(static_cast<unsigned char>(unit & 0xFF)),
                  static_cast<char>(static_cast<unsigned char>(unit >> 8))};
    return bytes;
}

std::string bigEndian(std::u16string_view text) {
    std::string bytes;
    for (const char16_t unit : text)
        bytes += {static_cast<char>(static_cast<unsigned char>(unit >> 8)),
                  static_cast<char>(static_cast<unsigned char>(unit & 0xFF))};
    return bytes;
}

/// Converts the text from both byte orders, which must give the same result.
std::string markedHtml(std::u16string_view text) {
    std::string converted = html(littleEndianMark + littleEndian(text));
    EXPECT_EQ(html(bigEndianMark + bigEndian(text)), converted);
    return converted;
}

TEST(Html, comesAsItIsInUtf8) {
    for (const std::string_view text : {"<b>déjà</b> €", "<p>", "\n", "\xEF\xBB\xBF<b>", "<b>\r\n"})
        EXPECT_EQ(html(text), text);
}

TEST(Html, comesAsItIsInNoEncodingThatIsKnown) {
    for (const std::string_view text : {"<b>d\xE9j\xE0</b>", "\xFF", "\xFE", "\xFFx", "\xFE\xFE", "\xFF\xFF"})
        EXPECT_EQ(html(text), text);
}

TEST(Html, isNotCopiedWhereItIsNotConverted) {
    const Bytes bytes = Bytes::copyOf("<b>");
    EXPECT_EQ(htmlOf({"text/html", "text/html", 8, bytes}).data(), bytes.data());
}

TEST(Html, losesZeroBytesAtTheEndOnly) {
    EXPECT_EQ(html(std::string_view("<b>\0", 4)), "<b>");
    EXPECT_EQ(html(std::string_view("<b>\0\0", 5)), "<b>");
    EXPECT_EQ(html(std::string_view("<\0b>\0", 5)), std::string("<\0b>", 4));
    EXPECT_EQ(markedHtml(std::u16string_view(u"<b>\0", 4)), "<b>");
    EXPECT_EQ(markedHtml(std::u16string_view(u"<b>\0\0", 5)), "<b>");
    EXPECT_EQ(markedHtml(std::u16string_view(u"<\0b>\0", 5)), std::string("<\0b>", 4));
}

TEST(Html, canBeEmpty) {
    EXPECT_EQ(html(""), "");
    EXPECT_EQ(html(std::string_view("\0\0", 2)), "");
    EXPECT_EQ(markedHtml(u""), "");
    EXPECT_EQ(markedHtml(std::u16string_view(u"\0", 1)), "");
    EXPECT_TRUE(htmlOf({"text/html", "text/html", 8, Bytes()}).empty());
}

TEST(Html, isConvertedFromUtf16WithAMark) {
    EXPECT_EQ(markedHtml(u"<b>"), "<b>");
    EXPECT_EQ(markedHtml(u"<b>déjà</b> €日本"), "<b>déjà</b> €日本");
    EXPECT_EQ(markedHtml(u"\u00FF\u0100\u07FF\u0800\uFFFD"),
              "\xC3\xBF\xC4\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBD");
}

TEST(Html, isConvertedWithItsSurrogatePairs) {
    EXPECT_EQ(markedHtml(u"a😀b"), "a😀b");
    EXPECT_EQ(markedHtml(u"\U00010000\U0010FFFF"), "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
}

TEST(Html, losesOneMarkOnly) {
    EXPECT_EQ(markedHtml(u"\uFEFFa"), "\xEF\xBB\xBF"
                                      "a");
}

TEST(Html, comesAsItIsWithABrokenSurrogate) {
    for (const std::u16string& text : {std::u16string{u'a', 0xD83D, u'b'}, std::u16string{u'a', 0xDE00, u'b'},
                                       std::u16string{0xDE00, 0xD83D, u'b'},
                                       std::u16string{0xD83D, 0xD83D, u'b'}, std::u16string{u'b', 0xD83D}}) {
        const std::string little = littleEndianMark + littleEndian(text);
        const std::string big = bigEndianMark + bigEndian(text);
        // In one byte order the last bytes are zeros, which are dropped.
        EXPECT_EQ(html(little), little.substr(0, little.find_last_not_of('\0') + 1));
        EXPECT_EQ(html(big), big.substr(0, big.find_last_not_of('\0') + 1));
    }
}

TEST(Html, losesHalfACharacterAtTheEnd) {
    EXPECT_EQ(html(littleEndianMark + littleEndian(u"<b>") + '\0'), "<b>");
    EXPECT_EQ(html(bigEndianMark + bigEndian(u"<b>") + '\0'), "<b>");
    EXPECT_EQ(html(littleEndianMark + littleEndian(std::u16string_view(u"<b>\0", 4)) + '\0'), "<b>");
    EXPECT_EQ(html(littleEndianMark + "x"), "");
    EXPECT_EQ(html(bigEndianMark + "x"), "");
}

TEST(Html, isNotGuessedToBeUtf16WithoutAMark) {
    EXPECT_EQ(html(littleEndian(u"<b>")), std::string("<\0b\0>", 5));
    EXPECT_EQ(html(bigEndian(u"<b>")), std::string("\0<\0b\0>", 6));
}

TEST(SelectionHtml, thatWasCutStaysLongerThanItsReaderTakes) {
    constexpr std::size_t limit = 10;
    const std::size_t received = largestHtmlValue(limit) + 1;
    std::string utf16 = "\xFF\xFE";
    while (utf16.size() < received)
        utf16 += (utf16.size() % 2 == 0) ? 'x' : '\0';
    for (const std::string& bytes : {std::string(received, 'x'), std::string(received, '\0'), utf16})
        EXPECT_GT(htmlOf({"text/html", "text/html", 8, Bytes::copyOf(bytes), true}).size(), limit);
}

TEST(SelectionHtml, ofTheLimitInUtf16IsReceivedWholeWithItsMarkAndTerminator) {
    constexpr std::size_t limit = 3;
    const std::string bytes("\xFF\xFEx\0y\0z\0\0\0", 10);
    ASSERT_LE(bytes.size(), largestHtmlValue(limit));
    EXPECT_EQ(htmlOf({"text/html", "text/html", 8, Bytes::copyOf(bytes)}).view(), "xyz");
}

} // namespace
} // namespace tavel
