#include "Mac/Strings.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

/// A string of any UTF-16 units, even malformed ones.
@interface TavelTestUnits : NSString {
@public
    const std::vector<unichar>* _units; // borrowed
}
@end

@implementation TavelTestUnits

- (NSUInteger)length {
    return _units->size();
}

- (unichar)characterAtIndex:(NSUInteger)index {
    return _units->at(index);
}

@end

namespace tavel {
namespace {

using namespace std::string_literals;

NSString* stringOf(const std::vector<unichar>& units) {
    return [NSString stringWithCharacters:units.data() length:units.size()];
}

std::vector<unichar> unitsOf(NSString* string) {
    std::vector<unichar> units([string length]);
    [string getCharacters:units.data() range:NSMakeRange(0, units.size())];
    return units;
}

TEST(Strings, charactersOfEveryPlaneComeBack) {
    std::string text;
    for (char32_t plane = 0; plane <= 0x10; ++plane) {
        for (const char32_t inPlane : {U'\x0000', U'\x0041', U'\x00E9', U'\x4E2D', U'\xE000', U'\xFFFD'}) {
            const char32_t character = plane * 0x10000 + inPlane;
            const std::vector<unichar> units =
                plane == 0 ? std::vector<unichar>{static_cast<unichar>(character)}
                           : std::vector<unichar>{static_cast<unichar>(0xD7C0 + (character >> 10)),
                                                  static_cast<unichar>(0xDC00 + (character & 0x3FF))};
            const auto one = utf8FromString(stringOf(units));
            ASSERT_TRUE(one) << std::hex << static_cast<unsigned>(character);
            EXPECT_EQ(unitsOf(stringFromUtf8(*one)), units) << std::hex << static_cast<unsigned>(character);
            text += *one;
        }
    }
    EXPECT_EQ(utf8FromString(stringFromUtf8(text)), text);
}

TEST(Strings, lengthsAreInUtf16) {
    EXPECT_EQ([stringFromUtf8("z\xC3\x9F\xE6\xB0\xB4\xF0\x9F\x8D\x8C") length], 5U);
    EXPECT_TRUE([stringFromUtf8("plain") isEqualToString:@"plain"]);
}

TEST(Strings, byteOrderMarksAreKept) {
    for (const std::string& text :
         {"\xEF\xBB\xBF"s, "\xEF\xBB\xBFtext"s, "\xEF\xBB\xBF\xEF\xBB\xBFtext"s, "te\xEF\xBB\xBFxt"s,
          "\xEF\xBF\xBEtext"s, "\xEF\xBB\xBF\xF0\x9F\x8D\x8C"s}) {
        EXPECT_EQ(utf8FromString(stringFromUtf8(text)), text) << testing::PrintToString(text);
    }
    EXPECT_EQ(unitsOf(stringFromUtf8("\xEF\xBB\xBFx")), (std::vector<unichar>{0xFEFF, 'x'}));
}

TEST(Strings, zeroCharactersAreKept) {
    for (const std::string& text : {"\0"s, "a\0b"s, "\0\0tail"s, "head\0\0"s}) {
        EXPECT_EQ([stringFromUtf8(text) length], text.size());
        EXPECT_EQ(utf8FromString(stringFromUtf8(text)), text) << testing::PrintToString(text);
    }
}

TEST(Strings, composedAndDecomposedLettersStayWhatTheyAre) {
    for (const std::string& text : {"\xC3\xA9"s, "e\xCC\x81"s})
        EXPECT_EQ(utf8FromString(stringFromUtf8(text)), text);
}

TEST(Strings, textThatIsNotUtf8IsNoString) {
    for (const std::string& bytes :
         {"\xFF"s, "caf\xE9"s, "\xC3"s, "\xC0\x80"s, "\xED\xA0\x80"s, "\xF4\x90\x80\x80"s})
        EXPECT_EQ(stringFromUtf8(bytes), nil) << testing::PrintToString(bytes);
}

TEST(Strings, anUnpairedSurrogateBecomesAReplacementCharacter) {
    const std::vector<std::pair<std::vector<unichar>, std::string>> texts{
        {{0xD83C}, "\uFFFD"},
        {{'x', 0xD83C}, "x\uFFFD"},
        {{0xD83C, 'x'}, "\uFFFDx"},
        {{'x', 0xDF4C, 'x'}, "x\uFFFDx"},
        {{'x', 0xDF4C, 0xD83C}, "x\uFFFD\uFFFD"},
    };
    for (const auto& [units, text] : texts) {
        TavelTestUnits* const string = [[TavelTestUnits alloc] autorelease];
        string->_units = &units;
        EXPECT_EQ(utf8FromString(string), text) << testing::PrintToString(units);
    }
    const std::vector<unichar> whole{'x', 0xD83C, 0xDF4C};
    TavelTestUnits* const string = [[TavelTestUnits alloc] autorelease];
    string->_units = &whole;
    EXPECT_EQ(utf8FromString(string), "x\xF0\x9F\x8D\x8C");
}

TEST(Strings, aBeginningExceedsTheLimitIfTheWholeDoes) {
    const std::string text = "a\u00E9\u4E2D\U0001F34Cz"; // 1 + 2 + 3 + 4 + 1 bytes
    for (std::size_t limit = 0; limit < text.size(); ++limit)
        EXPECT_GT(utf8Beginning(stringFromUtf8(text), limit)->size(), limit);
    EXPECT_EQ(utf8Beginning(stringFromUtf8(text), text.size()), text);
    EXPECT_EQ(utf8Beginning(stringFromUtf8(text), 0), "a");
    EXPECT_EQ(utf8Beginning(stringFromUtf8(text), 3), "a\u00E9\u4E2D\uFFFD") << "a pair that is cut in two";
}

TEST(Strings, nilIsNoText) {
    EXPECT_EQ(utf8FromString(nil), std::nullopt);
    EXPECT_EQ(utf8FromString(@""), "");
    EXPECT_EQ([stringFromUtf8("") length], 0U);
    EXPECT_NE(stringFromUtf8(""), nil);
}

} // namespace
} // namespace tavel
