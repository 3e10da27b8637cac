#include "Doctor/Surroundings.h"
#include "Tests/Unit/Doubles/TestPlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace tavel {

namespace {

using testing::HasSubstr;

/// What the Mac's part of the doctor writes. It needs no header of macOS, so it runs everywhere.
class DoctorOnMac : public testing::Test {
protected:
    std::string filePrompt(bool isAccepted) {
        testing::internal::CaptureStdout();
        report_.section("File prompt");
        surroundings::examineFilePrompt(report_, platform_, isAccepted);
        return testing::internal::GetCapturedStdout();
    }

    std::string end(int status) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(report_.finish(), status);
        return testing::internal::GetCapturedStdout();
    }

    TestPlatform platform_;
    Report report_;
};

TEST_F(DoctorOnMac, HasNothingToSayAgainstPermissionsThatAreThere) {
    EXPECT_EQ(filePrompt(true), "\nFile prompt\n"
                                "  keyboard         can be intercepted\n"
                                "  accessibility    permitted\n");
    EXPECT_EQ(end(0), "\nAll is well.\n");
}

TEST_F(DoctorOnMac, NamesThePermissionsThatAreMissing) {
    platform_.tap.losesPermission = true;
    platform_.tap.allowed = false;
    platform_.focus.trusted = false;
    EXPECT_THAT(filePrompt(false), HasSubstr("  keyboard         the system does not permit"));
    const std::string list = end(1);
    EXPECT_THAT(list, HasSubstr("     Input Monitoring and Accessibility. Give the application that starts"));
    EXPECT_THAT(list, HasSubstr("     Accessibility. Give the application that starts"));
}

TEST_F(DoctorOnMac, ReadsNoContent) {
    EXPECT_FALSE(surroundings::isContentAtHand(platform_));
}

} // namespace

} // namespace tavel
