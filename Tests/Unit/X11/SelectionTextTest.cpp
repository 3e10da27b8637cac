#include "Linux/Contents/SelectionText.h"

#include "Support/Text.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {
namespace {

/// The value as plain text, nullopt if it is none.
std::optional<std::string> plain(std::string target, std::string type, std::string_view bytes,
                                 int format = 8) {
    const auto text = plainTextOf({std::move(target), std::move(type), format, Bytes::copyOf(bytes)});
    return text ? std::optional<std::string>(text->view()) : std::nullopt;
}

const std::vector<std::string> targets{"UTF8_STRING",
                                       "text/plain;charset=utf-8",
                                       "Text/Plain; charset=\"UTF-8\"",
                                       "text/plain",
                                       "STRING",
                                       "TEXT",
                                       "COMPOUND_TEXT"};

const std::vector<std::string> utf8Types{"UTF8_STRING", "text/plain;charset=utf-8",
                                         "text/plain;charset=UTF-8", "Text/Plain; charset=\"utf8\""};

/// Types that declare no encoding.
const std::vector<std::string> otherTypes{"text/plain", "TEXT", "ATOM", "com.example.private", ""};

constexpr std::string_view inUtf8 = "d\xC3\xA9j\xC3\xA0 \xE2\x82\xAC";
constexpr std::string_view inLatin1 = "d\xE9j\xE0";

TEST(PlainText, isUtf8WhereTheTypeSaysSo) {
    for (const std::string& target : targets) {
        for (const std::string& type : utf8Types)
            EXPECT_EQ(plain(target, type, inUtf8), inUtf8) << target << " as " << type;
    }
}

TEST(PlainText, staysAsItIsWhereTheTypeSaysUtf8AndItIsNone) {
    for (const std::string& target : targets) {
        for (const std::string& type : utf8Types)
            EXPECT_EQ(plain(target, type, inLatin1), inLatin1) << target << " as " << type;
    }
}

TEST(PlainText, isLatin1WhereTheTypeIsString) {
    for (const std::string target : {"STRING", "TEXT", "text/plain", "COMPOUND_TEXT"}) {
        EXPECT_EQ(plain(target, "STRING", inLatin1), "déjà") << target;
        EXPECT_EQ(plain(target, "STRING", "\xC3\xA9"), "Ã©") << target << ", whatever it looks like";
        EXPECT_EQ(plain(target, "STRING", "ascii"), "ascii") << target;
    }
}

TEST(PlainText, convertsEveryCharacterOfLatin1) {
    std::string all;
    std::string expected;
    for (unsigned value = 1; value < 256; ++value) {
        all += static_cast<char>(static_cast<unsigned char>(value));
        if (value >= 0x80)
            expected += static_cast<char>(static_cast<unsigned char>(0xC0 | value >> 6));
        expected +=
            static_cast<char>(static_cast<unsigned char>(value < 0x80 ? value : 0x80 | (value & 0x3F)));
    }
    EXPECT_EQ(plain("STRING", "STRING", all), expected);
}

TEST(PlainText, isWhatItLooksLikeWhereTheTypeIsStringAgainstTheTarget) {
    // Some owners use the type STRING for every text.
    for (const std::string target : {"UTF8_STRING", "text/plain;charset=utf-8", "text/plain;charset=UTF8"}) {
        EXPECT_EQ(plain(target, "STRING", inUtf8), inUtf8) << target;
        EXPECT_EQ(plain(target, "STRING", inLatin1), "déjà") << target;
    }
}

TEST(PlainText, isWhatItLooksLikeWhereNoEncodingIsNamed) {
    for (const std::string& target : targets) {
        for (const std::string& type : otherTypes) {
            EXPECT_EQ(plain(target, type, inUtf8), inUtf8) << target << " as " << type;
            EXPECT_EQ(plain(target, type, inLatin1), "déjà") << target << " as " << type;
            EXPECT_EQ(plain(target, type, "ascii"), "ascii") << target << " as " << type;
        }
    }
}

TEST(PlainText, isNoUtf8WhereTheTypeNamesAnotherEncoding) {
    for (const std::string type : {"text/plain;charset=iso-8859-1", "text/plain; charset=ISO-8859-1"})
        EXPECT_EQ(plain("text/plain", type, inLatin1), "déjà") << type;
}

TEST(PlainText, isLatin1WhereACompoundTextHasNoEscapeSequence) {
    for (const std::string& target : targets) {
        EXPECT_EQ(plain(target, "COMPOUND_TEXT", inLatin1), "déjà") << target;
        EXPECT_EQ(plain(target, "COMPOUND_TEXT", "a\tb\nc"), "a\tb\nc") << target;
    }
}

TEST(PlainText, isNothingWhereACompoundTextHasAnEscapeSequence) {
    for (const std::string& target : targets) {
        for (const std::string_view text :
             {"\x1B%G\xE2\x82\xAC\x1B%@", "abc\x1B", "\x1B-A\xE9", "a\x1B$(B0!"})
            EXPECT_EQ(plain(target, "COMPOUND_TEXT", text), std::nullopt) << target;
    }
}

TEST(PlainText, mayHoldAnEscapeInEveryOtherType) {
    for (const std::string type : {"UTF8_STRING", "STRING", "TEXT", "text/plain"})
        EXPECT_EQ(plain("TEXT", type, "\x1B[0m"), "\x1B[0m") << type;
}

TEST(PlainText, losesZeroBytesAtTheEndOnly) {
    for (const std::string& target : targets) {
        for (const std::string type : {"UTF8_STRING", "STRING", "COMPOUND_TEXT", "text/plain", "TEXT"}) {
            EXPECT_EQ(plain(target, type, std::string_view("abc\0", 4)), "abc") << target << " as " << type;
            EXPECT_EQ(plain(target, type, std::string_view("abc\0\0\0", 6)), "abc");
            EXPECT_EQ(plain(target, type, std::string_view("\0a\0b\0", 5)), std::string("\0a\0b", 4));
        }
    }
    EXPECT_EQ(plain("STRING", "STRING", std::string_view("\xE9\0", 2)), "é");
    EXPECT_EQ(plain("TEXT", "TEXT", std::string_view("\xE9\0", 2)), "é");
    EXPECT_EQ(plain("UTF8_STRING", "UTF8_STRING", std::string_view("\xE9\0", 2)), "\xE9");
}

TEST(PlainText, keepsEveryOtherByte) {
    for (const std::string_view text : {"\xEF\xBB\xBFmarked", "a\r\nb\n", "\n", " "})
        EXPECT_EQ(plain("UTF8_STRING", "UTF8_STRING", text), text);
}

TEST(PlainText, canBeEmpty) {
    for (const std::string& target : targets) {
        for (const std::string type : {"UTF8_STRING", "STRING", "COMPOUND_TEXT", "text/plain", "TEXT"}) {
            EXPECT_EQ(plain(target, type, ""), "") << target << " as " << type;
            EXPECT_EQ(plain(target, type, std::string_view("\0\0", 2)), "") << target << " as " << type;
        }
    }
}

TEST(PlainText, canBeEmptyWithoutMemory) {
    for (const std::string type : {"UTF8_STRING", "STRING", "COMPOUND_TEXT", "text/plain", "TEXT"}) {
        const auto text = plainTextOf({"TEXT", type, 8, Bytes()});
        ASSERT_TRUE(text) << type;
        EXPECT_TRUE(text->empty()) << type;
    }
}

TEST(PlainText, hasBytesForUnits) {
    for (const std::string& target : targets) {
        for (const std::string type : {"UTF8_STRING", "STRING", "COMPOUND_TEXT", "text/plain", "ATOM"}) {
            for (const int format : {0, 16, 32})
                EXPECT_EQ(plain(target, type, "abcd", format), std::nullopt) << type << ' ' << format;
        }
    }
}

TEST(PlainText, isNotCopiedWhereItIsNotConverted) {
    const Bytes bytes = Bytes::copyOf(inUtf8);
    EXPECT_EQ(plainTextOf({"UTF8_STRING", "UTF8_STRING", 8, bytes})->data(), bytes.data());
    EXPECT_EQ(plainTextOf({"text/plain", "text/plain", 8, bytes})->data(), bytes.data());
}

std::optional<std::string> latin1(std::string_view text) {
    const auto bytes = latin1Of(Bytes::copyOf(text));
    return bytes ? std::optional<std::string>(bytes->view()) : std::nullopt;
}

TEST(Latin1, holdsTheTextWhereItCan) {
    EXPECT_EQ(latin1("ascii"), "ascii");
    EXPECT_EQ(latin1("déjà"), inLatin1);
    EXPECT_EQ(latin1("\xC2\x80\xC2\xA0\xC3\xBF"), "\x80\xA0\xFF");
    EXPECT_EQ(latin1("a\r\nb\t"), "a\r\nb\t");
    EXPECT_EQ(latin1(std::string_view("a\0b", 3)), std::string("a\0b", 3));
}

TEST(Latin1, refusesACharacterThatItHasNot) {
    for (const std::string_view text :
         {"€", "a€", "€a", "Ā", "œ", "’", "…", "日本", "😀", "e\xCC\x81", "\xEF\xBB\xBF"})
        EXPECT_EQ(latin1(text), std::nullopt) << text;
}

TEST(Latin1, refusesWhatIsNoUtf8) {
    for (const std::string_view text : {"\xE9", "\xC3", "a\xC3", "\xC3x", "\xFF", "\xC0\x80", "\xED\xA0\x80"})
        EXPECT_EQ(latin1(text), std::nullopt) << text;
}

TEST(Latin1, canBeEmpty) {
    EXPECT_EQ(latin1(""), "");
    const auto withoutMemory = latin1Of(Bytes());
    ASSERT_TRUE(withoutMemory);
    EXPECT_TRUE(withoutMemory->empty());
}

TEST(Latin1, givesBackWhatItHolds) {
    const std::string text = "déjà vu, «ça»";
    EXPECT_EQ(plain("STRING", "STRING", latin1(text).value()), text);
}

TEST(SelectionText, thatWasCutStaysLongerThanItsReaderTakes) {
    constexpr std::size_t limit = 10;
    const std::size_t received = largestPlainTextValue(limit) + 1;
    for (const auto& [type, bytes] : std::vector<std::pair<std::string, std::string>>{
             {"UTF8_STRING", std::string(received, 'x')},
             {"UTF8_STRING", std::string(received, '\0')},
             {"UTF8_STRING", std::string(received - 3, 'x') + "\xF0\x9F\x98"},
             {"STRING", std::string(received, '\xE9')},
             {"COMPOUND_TEXT", std::string(received, 'x')},
             {"unknown", std::string(received - 1, 'x') + "\xC3"}}) {
        const auto text = plainTextOf({type, type, 8, Bytes::copyOf(bytes), true});
        ASSERT_TRUE(text) << type;
        EXPECT_GT(text->size(), limit) << type;
        EXPECT_TRUE(isUtf8(text->view())) << type;
    }
}

TEST(SelectionText, ofTheLimitIsReceivedWholeWithATerminator) {
    constexpr std::size_t limit = 10;
    const std::string text(limit, 'x');
    const std::string withTerminator = text + std::string(4, '\0');
    EXPECT_EQ(withTerminator.size(), largestPlainTextValue(limit));
    const SelectionValue value{"UTF8_STRING", "UTF8_STRING", 8, Bytes::copyOf(withTerminator)};
    EXPECT_EQ(plainTextOf(value)->view(), text);
}

} // namespace
} // namespace tavel
