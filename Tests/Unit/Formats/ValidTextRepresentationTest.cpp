#include "TavelClipboardAgent/Formats/ValidRepresentation.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace tavel {
namespace {

using namespace std::string_literals;

// The formats that are recognised by their text.

const std::string byteOrderMark = "\xEF\xBB\xBF";

const std::vector<std::string>& notUtf8() {
    static const std::vector<std::string> all{"\xFF",
                                              "\xFE",
                                              "\x80",
                                              "\xBF",
                                              "\xC3",
                                              "\xC3(",
                                              "\xE2\x82",
                                              "\xF0\x9F\x98", // cut short
                                              "\xC0\x80",
                                              "\xC1\xBF",
                                              "\xE0\x80\xAF",
                                              "\xE0\x9F\xBF",
                                              "\xF0\x80\x80\xAF",
                                              "\xF0\x8F\xBF\xBF", // overlong
                                              "\xED\xA0\x80",
                                              "\xED\xBF\xBF",
                                              "\xED\xA0\xBD\xED\xB8\x80", // surrogates
                                              "\xF4\x90\x80\x80",
                                              "\xF8\x88\x80\x80\x80", // beyond U+10FFFF
                                              "h\xE9"};               // Latin 1
    return all;
}

TEST(ValidSvg, hasItsTagAnywhere) {
    for (const std::string& data :
         {"<svg"s, "<svg/>"s, "<svg xmlns=\"http://www.w3.org/2000/svg\"></svg>"s,
          "<?xml version=\"1.0\"?>\n<svg/>"s, "<!-- Voil\xC3\xA0 --><svg/>"s, byteOrderMark + "<svg/>",
          "\n\t <svg/>"s, "<html><body><svg/></body></html>"s, std::string(1'000'000, ' ') + "<svg"})
        EXPECT_TRUE(validRepresentation("image.svg", data)) << data.substr(0, 80);
}

TEST(ValidSvg, needsItsTagInLowerCase) {
    for (const std::string& data : {"<SVG/>"s, "<Svg/>"s, "< svg/>"s, "<sv"s, "svg"s, "<s:svg/>"s, "<sVg>"s,
                                    "<sv g>"s, "&lt;svg/&gt;"s, "<\0svg"s, "text"s})
        EXPECT_FALSE(validRepresentation("image.svg", data)) << data;
}

TEST(ValidSvg, isUtf8) {
    for (const std::string& data : notUtf8()) {
        EXPECT_FALSE(validRepresentation("image.svg", "<svg/>" + data));
        EXPECT_FALSE(validRepresentation("image.svg", data + "<svg/>"));
    }
    EXPECT_FALSE(validRepresentation("image.svg", "\xFF\xFE<\0s\0v\0g\0"s)) << "UTF-16";
    EXPECT_TRUE(validRepresentation("image.svg", "<svg/>\0"s)) << "a zero byte is UTF-8";
}

TEST(ValidRtf, startsWithItsTag) {
    for (const std::string_view data : {"{\\rtf", "{\\rtf1", "{\\rtf1\\ansi Bonjour}", "{\\rtfx"})
        EXPECT_TRUE(validRepresentation("text.rtf", data)) << data;
    for (const std::string_view data : {"{\\RTF1}", "{\\Rtf1}", "{\\rt", "{\\r", "{", "\\rtf1", "{rtf1}",
                                        "{ \\rtf1}", "{\\ rtf1}", "x{\\rtf1}", "text"})
        EXPECT_FALSE(validRepresentation("text.rtf", data)) << data;
}

TEST(ValidRtf, mayStartWithWhiteSpace) {
    for (const char space : " \t\n\v\f\r"s)
        EXPECT_TRUE(validRepresentation("text.rtf", std::string(1, space) + "{\\rtf1}")) << int{space};
    EXPECT_TRUE(validRepresentation("text.rtf", "\r\n \t\v\f{\\rtf1}"));
    for (char other = 0; other < 0x20; ++other) {
        const bool isSpace = other >= '\t' && other <= '\r';
        EXPECT_EQ(validRepresentation("text.rtf", std::string(1, other) + "{\\rtf1}"), isSpace) << int{other};
    }
    EXPECT_FALSE(validRepresentation("text.rtf", "\x7F{\\rtf1}"));
    EXPECT_FALSE(validRepresentation("text.rtf", std::string(10, ' ')));
    EXPECT_FALSE(validRepresentation("text.rtf", std::string(100, '\n')));
}

TEST(ValidRtf, hasItsTagWithin32Bytes) {
    for (std::size_t before = 0; before <= 40; ++before) {
        const std::string data = std::string(before, ' ') + "{\\rtf1 Bonjour}";
        EXPECT_EQ(validRepresentation("text.rtf", data), before <= 27) << before;
    }
    EXPECT_TRUE(validRepresentation("text.rtf", std::string(27, ' ') + "{\\rtf"));
}

TEST(ValidRtf, isAsciiForItsFirst32Bytes) {
    const std::string start = "{\\rtf1\\ansi ";
    for (const std::string_view character : {"\xC3\xA9", "\x80", "\xFF", "\xE2\x80\xA8"}) {
        for (std::size_t position = start.size(); position <= 40; ++position) {
            std::string data = start + std::string(60, 'x');
            data.replace(position, character.size(), character);
            EXPECT_EQ(validRepresentation("text.rtf", data), position >= 32) << "at " << position;
        }
    }
    EXPECT_FALSE(validRepresentation("text.rtf", byteOrderMark + "{\\rtf1}"));
    EXPECT_FALSE(validRepresentation("text.rtf", "\xC2\xA0{\\rtf1}")) << "a no-break space";
    EXPECT_TRUE(validRepresentation("text.rtf", start + "\x7F"));
}

TEST(ValidRtf, mayHoldZeroBytes) {
    EXPECT_TRUE(validRepresentation("text.rtf", "{\\rtf1\0}"s));
}

TEST(ValidText, isAnyUtf8) {
    for (const std::string_view format : {"text.html", "text.txt"}) {
        for (const std::string& data :
             {"t"s, " "s, "\n"s, "\x01\x7F"s, "Voil\xC3\xA0"s, "\xF0\x9F\x98\x80"s, "\xEF\xBF\xBF"s,
              "\xF4\x8F\xBF\xBF"s, "\xED\x9F\xBF\xEE\x80\x80"s, "<p>plain</p>"s, byteOrderMark,
              byteOrderMark + "t", byteOrderMark + byteOrderMark})
            EXPECT_TRUE(validRepresentation(format, data)) << format << ": " << data;
    }
}

TEST(ValidText, isNothingElse) {
    for (const std::string_view format : {"text.html", "text.txt"}) {
        for (const std::string& data : notUtf8()) {
            EXPECT_FALSE(validRepresentation(format, data)) << testing::PrintToString(data);
            EXPECT_FALSE(validRepresentation(format, "text before " + data)) << testing::PrintToString(data);
            EXPECT_FALSE(
                validRepresentation(format, std::string(100'000, 'x') + data + std::string(100, 'x')))
                << testing::PrintToString(data);
        }
    }
}

TEST(ValidText, holdsNoZeroByte) {
    for (const std::string_view format : {"text.html", "text.txt"}) {
        for (const std::string& data : {"\0"s, "\0t"s, "t\0"s, "t\0t"s, "t\0e\0x\0t\0"s})
            EXPECT_FALSE(validRepresentation(format, data)) << testing::PrintToString(data);
        std::string large(1'000'000, 'x');
        large.back() = '\0';
        EXPECT_FALSE(validRepresentation(format, large));
    }
}

} // namespace
} // namespace tavel
