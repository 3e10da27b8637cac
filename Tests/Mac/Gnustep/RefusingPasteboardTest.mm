#include "Mac/MacPasteboard.h"
#include "Platform/PasteboardTypes.h"
#include "Tests/Mac/Gnustep/PasteboardServer.h"
#include "Tests/Support/ReadingLimits.h"

#include <gtest/gtest.h>
#include <objc/runtime.h>

#include <array>

namespace tavel {
namespace {

constexpr std::string_view someType = "net.example.some";
constexpr const char* name = "net.example.test.refusing";

id raise(id /*self*/, SEL /*selector*/, ...) {
    [NSException raise:NSPasteboardCommunicationException format:@"The server does not answer."];
    return nil;
}

/// As long as it lives, the method raises an exception.
class Raising {
public:
    explicit Raising(Method method) : method_(method), normal_(method_setImplementation(method, raise)) {}
    ~Raising() { method_setImplementation(method_, normal_); }
    Raising(const Raising&) = delete;
    Raising& operator=(const Raising&) = delete;

private:
    Method method_;
    IMP normal_;
};

Method pasteboardMethod(SEL selector) {
    return class_getInstanceMethod([NSPasteboard class], selector);
}

Representation some(std::string_view type) {
    return {std::string(type), Bytes::copyOf("some")};
}

bool writesItem(MacPasteboard& pasteboard) {
    const PasteboardItem item{some(someType)};
    return pasteboard.replaceWithItems({&item, 1}).has_value();
}

bool writesValue(MacPasteboard& pasteboard, PasteboardValue::Form form) {
    const PasteboardValue value{std::string(someType), form, Bytes::copyOf("some")};
    return pasteboard.replaceWithValues({&value, 1}).has_value();
}

bool writesText(MacPasteboard& pasteboard) {
    return writesValue(pasteboard, PasteboardValue::Form::text);
}

bool writesData(MacPasteboard& pasteboard) {
    return writesValue(pasteboard, PasteboardValue::Form::data);
}

bool addsType(MacPasteboard& pasteboard) {
    const Representation added = some("net.example.added");
    return pasteboard.addTypes({&added, 1}).has_value();
}

/// A pasteboard of this object's own, which holds all that can be asked for.
void fill(MacPasteboard& pasteboard) {
    const PasteboardItem item{some(pasteboardType::string),
                              some(someType),
                              {std::string(pasteboardType::fileUrl), Bytes::copyOf("file:///nowhere")}};
    ASSERT_TRUE(pasteboard.replaceWithItems({&item, 1}));
}

void expectThatItHoldsNothingAndRefusesEveryWrite(MacPasteboard& pasteboard, std::int64_t lastCount) {
    EXPECT_EQ(pasteboard.changeCount(), lastCount) << "which never goes back";
    EXPECT_EQ(pasteboard.noticedChangeCount(), lastCount);
    EXPECT_TRUE(pasteboard.types().empty());
    EXPECT_FALSE(pasteboard.string(pasteboardType::string, ample));
    EXPECT_FALSE(pasteboard.string(someType, ample));
    EXPECT_FALSE(pasteboard.data(someType, ample));
    EXPECT_TRUE(pasteboard.files(everyFile).paths.empty());
    EXPECT_FALSE(writesText(pasteboard));
    EXPECT_FALSE(writesData(pasteboard));
    EXPECT_FALSE(writesItem(pasteboard));
    EXPECT_FALSE(pasteboard.replaceWithItems({}));
    EXPECT_FALSE(pasteboard.replaceWithValues({}));
    EXPECT_FALSE(addsType(pasteboard));
    EXPECT_TRUE(pasteboard.canHold(some(someType))) << "which is not for the server to tell";
}

TEST(RefusingPasteboard, whatRaisesAnExceptionIsAnsweredAsIfNothingWereThere) {
    MacPasteboard pasteboard(name);
    const auto answersNothing = [&](SEL selector, auto operation) {
        fill(pasteboard);
        ASSERT_TRUE(operation()) << "the operation works by itself";
        fill(pasteboard);
        const Raising raising(pasteboardMethod(selector));
        EXPECT_FALSE(operation()) << sel_getName(selector);
    };
    answersNothing(@selector(types), [&] { return !pasteboard.types().empty(); });
    answersNothing(@selector(stringForType:),
                   [&] { return pasteboard.string(pasteboardType::string, ample).has_value(); });
    answersNothing(@selector(dataForType:), [&] { return pasteboard.string(someType, ample).has_value(); });
    answersNothing(@selector(dataForType:), [&] { return pasteboard.data(someType, ample).has_value(); });
    answersNothing(@selector(readObjectsForClasses:options:),
                   [&] { return !pasteboard.files(everyFile).paths.empty(); });
    answersNothing(@selector(clearContents), [&] { return writesText(pasteboard); });
    answersNothing(@selector(clearContents), [&] { return writesItem(pasteboard); });
    answersNothing(@selector(setString:forType:), [&] { return writesText(pasteboard); });
    answersNothing(@selector(setData:forType:), [&] { return writesData(pasteboard); });
    answersNothing(@selector(writeObjects:), [&] { return writesItem(pasteboard); });
    answersNothing(@selector(types), [&] { return addsType(pasteboard); });
    answersNothing(@selector(addTypes:owner:), [&] { return addsType(pasteboard); });
    answersNothing(@selector(setString:forType:), [&] { return addsType(pasteboard); });
}

TEST(RefusingPasteboard, aClearingThatFailsLeavesThePasteboardAndItsCount) {
    MacPasteboard pasteboard(name);
    fill(pasteboard);
    const std::int64_t before = pasteboard.changeCount();
    {
        const Raising raising(pasteboardMethod(@selector(clearContents)));
        EXPECT_FALSE(pasteboard.replaceWithItems({}));
        EXPECT_FALSE(writesText(pasteboard)) << "it was not cleared for this text";
        EXPECT_FALSE(writesItem(pasteboard));
    }
    EXPECT_EQ(pasteboard.changeCount(), before);
    EXPECT_TRUE(pasteboard.data(pasteboardType::string, ample)) << "which only the old content has";
}

TEST(RefusingPasteboard, aCountThatCannotBeReadIsTheLastOne) {
    MacPasteboard pasteboard(name);
    fill(pasteboard);
    const std::int64_t before = pasteboard.changeCount();
    EXPECT_GT(before, 0);
    const Raising raising(pasteboardMethod(@selector(changeCount)));
    EXPECT_EQ(pasteboard.changeCount(), before);
    EXPECT_EQ(pasteboard.noticedChangeCount(), before);
    EXPECT_EQ(pasteboard.replaceWithItems({}), before + 1) << "a write gives its count itself";
    EXPECT_EQ(pasteboard.changeCount(), before + 1) << "the count never goes back";
}

TEST(RefusingPasteboard, whatFollowsARefusedValueIsNotWritten) {
    MacPasteboard pasteboard(name);
    fill(pasteboard);
    const std::array values{
        PasteboardValue{std::string(pasteboardType::string), PasteboardValue::Form::text,
                        Bytes::copyOf("text")},
        PasteboardValue{std::string(someType), PasteboardValue::Form::data, Bytes::copyOf("data")},
    };
    const Raising raising(pasteboardMethod(@selector(setString:forType:)));
    EXPECT_FALSE(pasteboard.replaceWithValues(values));
    EXPECT_FALSE(pasteboard.data(someType, ample));
    EXPECT_TRUE(pasteboard.types().empty()) << "the clearing holds";
}

TEST(RefusingPasteboard, anItemThatRaisesIsRefused) {
    MacPasteboard pasteboard(name);
    fill(pasteboard);
    const Raising raising(class_getInstanceMethod([NSPasteboardItem class], @selector(setData:forType:)));
    EXPECT_FALSE(pasteboard.canHold(some(someType)));
    EXPECT_TRUE(pasteboard.data(someType, ample)) << "what was there still is";
    EXPECT_FALSE(writesItem(pasteboard));
    EXPECT_TRUE(pasteboard.types().empty()) << "the clearing holds";
}

TEST(RefusingPasteboard, theSystemItselfTakesAnItemOnlyOnce) {
    NSPasteboard* const system = MacPasteboard::named(name);
    NSPasteboardItem* const item = [[[NSPasteboardItem alloc] init] autorelease];
    ASSERT_TRUE([item setString:@"some" forType:@"net.example.some"]);
    [system clearContents];
    ASSERT_TRUE([system writeObjects:[NSArray arrayWithObject:item]]);
    bool raised = false;
    @try {
        [system writeObjects:[NSArray arrayWithObject:item]];
    } @catch (NSException*) {
        raised = true;
    }
    EXPECT_TRUE(raised);
}

TEST(RefusingPasteboard, aPasteboardThatCouldNotBeOpenedHoldsNothing) {
    std::optional<MacPasteboard> pasteboard;
    {
        const Raising raising(class_getClassMethod([NSPasteboard class], @selector(pasteboardWithName:)));
        pasteboard.emplace(name);
    }
    expectThatItHoldsNothingAndRefusesEveryWrite(*pasteboard, 0);
}

TEST(RefusingPasteboard, aPasteboardWhoseServerIsGoneHoldsNothing) {
    MacPasteboard pasteboard(name);
    fill(pasteboard);
    const Bytes read = pasteboard.data(someType, ample).value();
    const std::int64_t lastCount = pasteboard.changeCount();
    PasteboardServer::ofTheTests().stop();
    expectThatItHoldsNothingAndRefusesEveryWrite(pasteboard, lastCount);
    EXPECT_EQ(read.view(), "some");
    PasteboardServer::ofTheTests().start();
}

} // namespace
} // namespace tavel
