#include "Mac/CoreStrings.h"

#include "Tests/Mac/Double/DoubledMac.h"

#include <optional>
#include <string>

namespace tavel {

using namespace doubles;
using namespace std::string_literals;

namespace {

class DoubledCoreStrings : public DoubledMac {
protected:
    static std::optional<std::string> utf8From(const Value& value) {
        const Reference object = Reference::to(createObject(value));
        return utf8FromObject(object.get());
    }
};

using DoubledCoreObjectsDeathTest = DoubledCoreStrings;

} // namespace

TEST_F(DoubledCoreStrings, haveCharactersOfOneUnitAndOfTwo) {
    EXPECT_EQ(utf8From(u""), "");
    EXPECT_EQ(utf8From(u"public.png"), "public.png");
    EXPECT_EQ(utf8From(u"\u00E9\u20AC\uFFFF"), "\xC3\xA9\xE2\x82\xAC\xEF\xBF\xBF");
    EXPECT_EQ(utf8From(u"a\U0001F600\U0010FFFF"), "a\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF");
}

TEST_F(DoubledCoreStrings, mayBeConstantsOfTheCompiler) {
    EXPECT_EQ(utf8FromObject(CFSTR("public.jpeg")), "public.jpeg");
    EXPECT_EQ(utf8FromObject(CFSTR("")), "");
}

TEST_F(DoubledCoreStrings, keepAByteOrderMarkAndZeros) {
    EXPECT_EQ(utf8From(u"\uFEFFa\uFEFF"), "\xEF\xBB\xBF"
                                          "a\xEF\xBB\xBF");
    EXPECT_EQ(utf8From(std::u16string(u"\0a\0", 3)), std::string("\0a\0", 3));
}

TEST_F(DoubledCoreStrings, haveAReplacementCharacterForAnUnpairedSurrogate) {
    EXPECT_EQ(utf8From(u"a\xD83D"s), "a\uFFFD");
    EXPECT_EQ(utf8From(u"\xDE00\xD83D"s), "\uFFFD\uFFFD");
}

TEST_F(DoubledCoreStrings, areNotMadeFromOtherObjects) {
    EXPECT_EQ(utf8From(std::int64_t{7}), std::nullopt);
    EXPECT_EQ(utf8From(0.5), std::nullopt);
    EXPECT_EQ(utf8From(true), std::nullopt);
    EXPECT_EQ(utf8FromObject(CFRunLoopGetMain()), std::nullopt);
    EXPECT_EQ(utf8FromObject(nullptr), std::nullopt);
}

TEST_F(DoubledCoreObjectsDeathTest, endAProgramThatReleasesThemTooOften) {
    EXPECT_DEATH(
        {
            const CFTypeRef object = createObject(u"text");
            CFRelease(object);
            CFRelease(object);
        },
        "not a living object|heap-use-after-free");
}

TEST_F(DoubledCoreObjectsDeathTest, endAProgramThatConfusesTheirTypes) {
    const Reference number = Reference::to(createObject(1.0));
    EXPECT_DEATH(CFStringGetLength(static_cast<CFStringRef>(number.get())), "another type");
}

} // namespace tavel
