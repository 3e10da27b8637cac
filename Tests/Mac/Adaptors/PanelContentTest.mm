#include "Mac/Application.h"
#include "Mac/FileNamePanel.h"
#include "Mac/Retained.h"
#include "Mac/Strings.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace tavel {

namespace {

using testing::ElementsAre;

std::string describe(NSRect area) {
    return std::to_string(static_cast<int>(area.origin.x)) + " " +
           std::to_string(static_cast<int>(area.origin.y)) + " " +
           std::to_string(static_cast<int>(area.size.width)) + " " +
           std::to_string(static_cast<int>(area.size.height));
}

/// A pool that lives as long as this object.
class AutoreleasePool {
public:
    AutoreleasePool() = default;
    ~AutoreleasePool() { [pool_ drain]; }
    AutoreleasePool(const AutoreleasePool&) = delete;
    AutoreleasePool& operator=(const AutoreleasePool&) = delete;

private:
    NSAutoreleasePool* pool_ = [[NSAutoreleasePool alloc] init];
};

class PanelContent : public testing::Test {
protected:
    PanelContent() {
        becomeAccessoryApplication();
        const NamePanelTexts texts{"Title", "Extension: .txt", "stem", "Cancel it", "Confirm it"};
        const NamePanelActions actions{[this] { reports_.emplace_back("confirm"); },
                                       [this] { reports_.emplace_back("cancel"); }};
        panel_ = Retained<FileNamePanel>::adopt([[FileNamePanel alloc] initWithTexts:texts actions:actions]);
    }
    ~PanelContent() override { [panel_.get() dismiss]; }
    PanelContent(const PanelContent&) = delete;
    PanelContent& operator=(const PanelContent&) = delete;

    FileNamePanel* panel() { return panel_.get(); }
    NSArray* views() { return [[panel_.get() contentView] subviews]; }
    NSTextField* label() { return [views() objectAtIndex:0]; }
    NSTextField* field() { return [views() objectAtIndex:1]; }
    NSTextField* hint() { return [views() objectAtIndex:2]; }
    NSButton* cancelButton() { return [views() objectAtIndex:3]; }
    NSButton* confirmButton() { return [views() objectAtIndex:4]; }
    std::string entered() { return utf8FromString([panel_.get() enteredText]).value(); }

    std::vector<std::string> reports_;

private:
    AutoreleasePool pool_;
    Retained<FileNamePanel> panel_;
};

TEST_F(PanelContent, isATitledClosablePanelThatStays) {
    EXPECT_EQ(utf8FromString([panel() title]), "Title");
    EXPECT_EQ([panel() styleMask], NSUInteger { 3 });
    EXPECT_EQ(describe([[panel() contentView] bounds]), "0 0 410 170");
    EXPECT_FALSE([panel() hidesOnDeactivate]);
    EXPECT_FALSE([panel() isReleasedWhenClosed]);
    EXPECT_TRUE([panel() canBecomeKeyWindow]);
    EXPECT_EQ([panel() delegate], panel());
    EXPECT_EQ([panel() level], NSInteger { NSFloatingWindowLevel });
    EXPECT_EQ([panel() collectionBehavior], NSUInteger { NSWindowCollectionBehaviorCanJoinAllSpaces });
    EXPECT_FALSE([panel() isVisible]);
}

TEST_F(PanelContent, followsTheLayout) {
    std::vector<std::string> frames;
    for (NSView* view in views())
        frames.push_back(describe([view frame]));
    EXPECT_THAT(frames,
                ElementsAre("20 125 370 22", "20 92 370 26", "20 48 370 38", "210 12 90 30", "305 12 90 30"));
}

TEST_F(PanelContent, showsItsTexts) {
    EXPECT_EQ(utf8FromString([label() stringValue]), "Extension: .txt");
    EXPECT_EQ(utf8FromString([field() stringValue]), "stem");
    EXPECT_EQ(utf8FromString([hint() stringValue]), "");
    EXPECT_EQ(utf8FromString([cancelButton() title]), "Cancel it");
    EXPECT_EQ(utf8FromString([confirmButton() title]), "Confirm it");
}

TEST_F(PanelContent, onlyTheFieldIsEdited) {
    EXPECT_FALSE([label() isEditable]);
    EXPECT_TRUE([field() isEditable]);
    EXPECT_FALSE([hint() isEditable]);
    EXPECT_EQ([panel() initialFirstResponder], field());
}

TEST_F(PanelContent, buttonsAreOnReturnAndEscape) {
    EXPECT_EQ(utf8FromString([cancelButton() keyEquivalent]), "\x1B");
    EXPECT_EQ(utf8FromString([confirmButton() keyEquivalent]), "\r");
    EXPECT_EQ([cancelButton() bezelStyle], static_cast<NSBezelStyle>(1));
    EXPECT_EQ([confirmButton() bezelStyle], static_cast<NSBezelStyle>(1));
}

TEST_F(PanelContent, buttonsReport) {
    [panel() present];
    [cancelButton() performClick:nil];
    [confirmButton() performClick:nil];
    EXPECT_THAT(reports_, ElementsAre("cancel", "confirm"));
}

TEST_F(PanelContent, cancelOperationAndClosingReportACancellation) {
    [panel() present];
    [panel() cancelOperation:nil];
    EXPECT_FALSE([panel() windowShouldClose:panel()]);
    [panel() performClose:nil];
    EXPECT_THAT(reports_, ElementsAre("cancel", "cancel", "cancel"));
    EXPECT_TRUE([panel() isVisible]);
}

TEST_F(PanelContent, reportsNothingBeforeItIsShown) {
    [panel() confirmName];
    [panel() cancelName];
    EXPECT_THAT(reports_, ElementsAre());
}

TEST_F(PanelContent, reportsNothingOnceItIsHidden) {
    [panel() present];
    EXPECT_TRUE([panel() isVisible]);
    [panel() dismiss];
    EXPECT_FALSE([panel() isVisible]);
    [confirmButton() performClick:nil];
    [cancelButton() performClick:nil];
    [panel() cancelOperation:nil];
    [panel() windowShouldClose:panel()];
    EXPECT_THAT(reports_, ElementsAre());
}

TEST_F(PanelContent, theEnteredTextIsWhatWasConfirmedLast) {
    [panel() present];
    EXPECT_EQ(entered(), "stem");
    [field() setStringValue:@"first"];
    EXPECT_EQ(entered(), "stem");
    [panel() confirmName];
    EXPECT_EQ(entered(), "first");
    [field() setStringValue:@"second"];
    EXPECT_EQ(entered(), "first");
}

TEST_F(PanelContent, aHintLeavesTheRestAsItIs) {
    [panel() present];
    [panel() showHint:@"Try another."];
    EXPECT_EQ(utf8FromString([hint() stringValue]), "Try another.");
    EXPECT_EQ(utf8FromString([field() stringValue]), "stem");
    EXPECT_TRUE([panel() isVisible]);
}

TEST_F(PanelContent, theStemIsSelectedForTyping) {
    [panel() present];
    NSText* const editor = [panel() fieldEditor:NO forObject:field()];
    ASSERT_EQ([panel() firstResponder], editor);
    EXPECT_EQ([editor selectedRange].location, NSUInteger{0});
    EXPECT_EQ([editor selectedRange].length, NSUInteger{4});
}

} // namespace

} // namespace tavel
