#include "Mac/AccessibleFocus.h"

#include "Tests/Mac/Double/DoubledMac.h"

#include <memory>

namespace tavel {

using namespace doubles;
using namespace std::chrono_literals;

namespace {

constexpr std::int32_t process = 4711;

class DoubledAccessibleFocus : public DoubledMac {
protected:
    DoubledAccessibleFocus() { programs()[process] = program_; }

    std::shared_ptr<Accessible> list_ = std::make_shared<Accessible>(
        Accessible{.attributes = {{u"AXRole", Value(u"AXList")}, {u"AXTitle", Value(u"Files")}}});
    std::shared_ptr<Accessible> program_ = std::make_shared<Accessible>(
        Accessible{.attributes = {{u"AXFocusedUIElement", list_}, {u"AXRole", Value(u"AXApplication")}}});
};

} // namespace

TEST_F(DoubledAccessibleFocus, isTheRoleOfTheElementWithTheFocus) {
    EXPECT_EQ(accessibleFocusRole(process), "AXList");
}

TEST_F(DoubledAccessibleFocus, isUnknownForAMissingProcess) {
    EXPECT_EQ(accessibleFocusRole(process + 1), std::nullopt);
    EXPECT_EQ(accessibleFocusRole(-1), std::nullopt);
}

TEST_F(DoubledAccessibleFocus, eachOfTwoAnswersMayTakeAlmostTheTimeOut) {
    program_->delay = 39ms;
    list_->delay = 39ms;
    EXPECT_EQ(accessibleFocusRole(process), "AXList");
}

TEST_F(DoubledAccessibleFocus, aSlowProgramIsNotWaitedFor) {
    program_->delay = 41ms;
    EXPECT_EQ(accessibleFocusRole(process), std::nullopt);
}

TEST_F(DoubledAccessibleFocus, aSlowElementIsNotWaitedFor) {
    list_->delay = 41ms;
    EXPECT_EQ(accessibleFocusRole(process), std::nullopt);
}

TEST_F(DoubledAccessibleFocus, isUnknownWithoutAFocusedElement) {
    program_->attributes[u"AXFocusedUIElement"] = noValue;
    EXPECT_EQ(accessibleFocusRole(process), std::nullopt);
    program_->attributes.clear();
    EXPECT_EQ(accessibleFocusRole(process), std::nullopt);
}

TEST_F(DoubledAccessibleFocus, isUnknownIfTheFocusedObjectIsNoElement) {
    for (const Value& value : {Value(u"AXList"), Value(1.0), Value(true)}) {
        program_->attributes[u"AXFocusedUIElement"] = value;
        EXPECT_EQ(accessibleFocusRole(process), std::nullopt);
    }
}

TEST_F(DoubledAccessibleFocus, isUnknownIfTheRoleIsNoText) {
    for (const Value& value : {Value(std::int64_t{7}), Value(false), Value(1.0)}) {
        list_->attributes[u"AXRole"] = value;
        EXPECT_EQ(accessibleFocusRole(process), std::nullopt);
    }
    list_->attributes[u"AXRole"] = program_;
    EXPECT_EQ(accessibleFocusRole(process), std::nullopt);
    program_->attributes.clear(); // breaks the cycle of references with the list
}

TEST_F(DoubledAccessibleFocus, isUnknownWithoutARole) {
    list_->attributes[u"AXRole"] = noValue;
    EXPECT_EQ(accessibleFocusRole(process), std::nullopt);
    list_->attributes.clear();
    EXPECT_EQ(accessibleFocusRole(process), std::nullopt);
}

TEST_F(DoubledAccessibleFocus, isReadAnewEveryTime) {
    EXPECT_EQ(accessibleFocusRole(process), "AXList");
    list_->attributes[u"AXRole"] = Value(u"AXTextField");
    EXPECT_EQ(accessibleFocusRole(process), "AXTextField");
}

} // namespace tavel
