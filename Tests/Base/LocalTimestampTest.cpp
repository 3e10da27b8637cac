#include "Linux/Base/LocalTimestamp.h"

#include "Linux/Base/Modules.h"
#include "Tests/Store/EnvironmentVariable.h"
#include "Tests/Unit/Fixtures/ScratchDirectory.h"

#include <gtest/gtest.h>

#include <array>
#include <ctime>
#include <string>
#include <vector>

namespace tavel {
namespace {

class LocalTimestampTest : public testing::Test {
protected:
    std::string now() { return timestamp_.now(); }

    static std::string expected(const char* pattern, std::time_t time) {
        std::tm parts{};
        localtime_r(&time, &parts);
        std::array<char, 64> text{};
        return {text.data(), std::strftime(text.data(), text.size(), pattern, &parts)};
    }

    /// Whether the text is the time of a second between `before` and now.
    static bool isNow(const std::string& text, std::time_t before) {
        for (std::time_t time = before; time <= std::time(nullptr); ++time) {
            if (text == expected("%Y-%m-%d-%H%M%S", time))
                return true;
        }
        return false;
    }

    std::vector<std::string> logged_;
    const EnvironmentVariable all_{"LC_ALL", std::nullopt};
    const EnvironmentVariable time_{"LC_TIME", std::nullopt};
    const EnvironmentVariable language_{"LANG", std::nullopt};
    LocalTimestamp timestamp_{[this](const std::string& message) { logged_.push_back(message); },
                              modulePath("tavel-dates")};
};

TEST_F(LocalTimestampTest, isThePresentDayAndTime) {
    for (const char* const locale : {"C", "POSIX", "fr_FR.UTF-8", "en_US", "de_DE@euro", "nonsense", ""}) {
        const EnvironmentVariable language("LANG", locale);
        const std::time_t before = std::time(nullptr);
        const std::string text = now();
        EXPECT_TRUE(isNow(text, before)) << locale << ": " << text;
    }
    EXPECT_TRUE(logged_.empty());
}

TEST_F(LocalTimestampTest, isInTheCalendarOfTheUsersCountry) {
    const EnvironmentVariable language("LANG", "th_TH.UTF-8");
    const std::string before = expected("%Y", std::time(nullptr));
    const int buddhistYear = std::stoi(now());
    EXPECT_GE(buddhistYear, std::stoi(before) + 543);
    EXPECT_LE(buddhistYear, std::stoi(expected("%Y", std::time(nullptr))) + 543);
}

TEST_F(LocalTimestampTest, isInTheDigitsOfTheUsersCountry) {
    const EnvironmentVariable language("LANG", "fa_IR.UTF-8");
    const std::string text = now();
    EXPECT_EQ(text.find_first_of("0123456789"), std::string::npos) << text;
    EXPECT_EQ(text.size(), 14 * 2 + 3U) << text; // two-byte digits and three hyphens
}

TEST_F(LocalTimestampTest, isInTheUsersTimeZone) {
    const EnvironmentVariable zone("TZ", "Asia/Kathmandu"); // UTC+05:45
    tzset();
    const std::time_t before = std::time(nullptr);
    EXPECT_NE(expected("%M", before), expected("%M", before - std::time_t{5 * 3600 + 45 * 60}));
    EXPECT_TRUE(isNow(now(), before));
}

TEST_F(LocalTimestampTest, takesTheLocaleForDatesBeforeTheGeneralOne) {
    const EnvironmentVariable language("LANG", "fa_IR.UTF-8");
    {
        const EnvironmentVariable time("LC_TIME", "fr_FR.UTF-8");
        const std::time_t before = std::time(nullptr);
        EXPECT_TRUE(isNow(now(), before));
        const EnvironmentVariable all("LC_ALL", "th_TH.UTF-8");
        EXPECT_TRUE(now().starts_with("25"));
    }
    const EnvironmentVariable empty("LC_ALL", "");
    EXPECT_EQ(now().find_first_of("0123456789"), std::string::npos);
}

TEST_F(LocalTimestampTest, isWrittenTheCommonWayWithoutTheModule) {
    const ScratchDirectory directory;
    const EnvironmentVariable language("LANG", "th_TH.UTF-8");
    LocalTimestamp timestamp([this](const std::string& message) { logged_.push_back(message); },
                             directory / "missing.so");
    const std::time_t before = std::time(nullptr);
    EXPECT_TRUE(isNow(timestamp.now(), before));
    EXPECT_TRUE(isNow(timestamp.now(), before));
    ASSERT_EQ(logged_.size(), 1U);
    EXPECT_NE(logged_.front().find("missing.so"), std::string::npos) << logged_.front();
}

} // namespace
} // namespace tavel
