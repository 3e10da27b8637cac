#include "Support/JsonNumber.h"

#include "Tests/Unit/Fixtures/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {
namespace {

constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();

/// All limbs of the integer with these decimal digits, lowest first. Unlike the tested code, it computes
/// without a modulus.
std::vector<std::uint32_t> wideInteger(std::string_view digits) {
    std::vector<std::uint32_t> limbs;
    for (const char digit : digits) {
        auto carry = static_cast<std::uint64_t>(digit - '0');
        for (std::uint32_t& limb : limbs) {
            carry += std::uint64_t{limb} * 10;
            limb = static_cast<std::uint32_t>(carry & 0xFFFFFFFF);
            carry >>= 32;
        }
        if (carry != 0)
            limbs.push_back(static_cast<std::uint32_t>(carry));
    }
    return limbs;
}

struct Decimal {
    bool negative;
    std::string integer;
    std::string fraction;
    int exponent;

    std::string token() const {
        std::string text = (negative ? "-" : "") + integer;
        if (!fraction.empty())
            text += "." + fraction;
        if (exponent != 0)
            text += "e" + std::to_string(exponent);
        return text;
    }

    /// The digits of the integer part after the exponent is applied.
    std::string integerDigits() const {
        std::string digits = integer + fraction;
        const int point = static_cast<int>(integer.size()) + exponent;
        digits.resize(static_cast<std::size_t>(std::max(point, 0)), '0');
        return digits;
    }

    std::uint64_t expected() const {
        auto limbs = wideInteger(integerDigits());
        limbs.resize(std::max<std::size_t>(limbs.size(), 2));
        const std::uint64_t value = std::uint64_t{limbs[1]} << 32 | limbs[0];
        return negative ? 0 - value : value;
    }
};

std::string randomDigits(Random& random, std::size_t count) {
    std::string digits;
    for (; count > 0; --count)
        digits += static_cast<char>('0' + random.below(10));
    return digits;
}

TEST(JsonNumber, isWhatTheGrammarAllows) {
    for (const std::string_view token : {"0",
                                         "-0",
                                         "7",
                                         "10",
                                         "1234567890",
                                         "-1",
                                         "0.0",
                                         "-0.0",
                                         "0.5",
                                         "1.50",
                                         "10.01",
                                         "1e0",
                                         "1E0",
                                         "1e+0",
                                         "1e-0",
                                         "1e007",
                                         "0e5",
                                         "-0e-5",
                                         "0.0E+00",
                                         "12.34e56",
                                         "1e400",
                                         "1e99999999999999999999",
                                         "123456789012345678901234567890123456789012345678901234567890"}) {
        EXPECT_TRUE(isJsonNumber(token)) << token;
        EXPECT_TRUE(unsignedFromJsonNumber(token).has_value()) << token;
    }
}

TEST(JsonNumber, isNothingElse) {
    for (const std::string_view token :
         {"",         "-",     "+",    "+1",     "--1",  "00",    "01",    "-01", "007",  "1.",
          ".5",       "-.5",   "1.e5", "1.-5",   "1..5", "1.5.",  "1e",    "1e+", "1e-",  "e5",
          "1e5.",     "1e5.0", "1e+-", "1ee5",   "1 ",   " 1",    "1\n",   "1a",  "a1",   "0x10",
          "Infinity", "NaN",   "inf",  "-inf",   "1_0",  "1,000", "1'000", "0b1", "1e 5", "- 1",
          "1f",       "true",  "null", R"("1")", "1d",   "١",     "1\xC2"}) {
        EXPECT_FALSE(isJsonNumber(token)) << token;
        EXPECT_EQ(unsignedFromJsonNumber(token), std::nullopt) << token;
        EXPECT_EQ(booleanFromJsonNumber(token), std::nullopt) << token;
    }
    EXPECT_FALSE(isJsonNumber(std::string_view("1\0", 2)));
}

TEST(JsonNumber, givesItsIntegerPart) {
    const std::vector<std::pair<std::string_view, std::uint64_t>> cases{
        {"0", 0},
        {"-0", 0},
        {"7", 7},
        {"7.9", 7},
        {"0.5", 0},
        {"-0.5", 0},
        {"-0.999", 0},
        {"1e3", 1000},
        {"1E+3", 1000},
        {"1.5e1", 15},
        {"1.59e1", 15},
        {"123e-1", 12},
        {"123e-2", 1},
        {"123e-3", 0},
        {"123e-4", 0},
        {"0.001e3", 1},
        {"0.001e2", 0},
        {"0e5", 0},
        {"0.0e99", 0},
        {"1.000e2", 100},
        {"1.23456e2", 123},
        {"1.23456e5", 123456},
        {"1.23456e7", 12345600},
        {"12.5e-1", 1},
    };
    for (const auto& [token, value] : cases)
        EXPECT_EQ(unsignedFromJsonNumber(token), value) << token;
}

TEST(JsonNumber, wrapsANegativeInteger) {
    EXPECT_EQ(unsignedFromJsonNumber("-1"), largest);
    EXPECT_EQ(unsignedFromJsonNumber("-1.9"), largest);
    EXPECT_EQ(unsignedFromJsonNumber("-7"), largest - 6);
    EXPECT_EQ(unsignedFromJsonNumber("-1e3"), largest - 999);
    EXPECT_EQ(unsignedFromJsonNumber("-9223372036854775808"), 0x8000000000000000U);
    EXPECT_EQ(unsignedFromJsonNumber("-9223372036854775809"), 0x7FFFFFFFFFFFFFFFU);
    EXPECT_EQ(unsignedFromJsonNumber("-18446744073709551615"), 1U);
    EXPECT_EQ(unsignedFromJsonNumber("-18446744073709551616"), 0U);
}

TEST(JsonNumber, isExactUpToTheLargestInteger) {
    EXPECT_EQ(unsignedFromJsonNumber("9007199254740993"), 9007199254740993U); // not exact as a double
    EXPECT_EQ(unsignedFromJsonNumber("9223372036854775807"), 0x7FFFFFFFFFFFFFFFU);
    EXPECT_EQ(unsignedFromJsonNumber("18446744073709551615"), largest);
    EXPECT_EQ(unsignedFromJsonNumber("1844674407370955161.5e1"), largest);
    EXPECT_EQ(unsignedFromJsonNumber("18446744073709551615.999"), largest);
}

TEST(JsonNumber, wrapsWhatIsLarger) {
    EXPECT_EQ(unsignedFromJsonNumber("18446744073709551616"), 0U);
    EXPECT_EQ(unsignedFromJsonNumber("18446744073709551623"), 7U);
    EXPECT_EQ(unsignedFromJsonNumber("36893488147419103239"), 7U);
    EXPECT_EQ(unsignedFromJsonNumber("1e20"), 0x6BC75E2D63100000U);
    EXPECT_EQ(unsignedFromJsonNumber("1e63"), 0x8000000000000000U); // 1e64 and above are 0 modulo 2^64
    EXPECT_EQ(unsignedFromJsonNumber("1e64"), 0U);
    EXPECT_EQ(unsignedFromJsonNumber("3e64"), 0U);
}

TEST(JsonNumber, takesExponentsOfAnySize) {
    for (const std::string_view token :
         {"1e400", "7e9223372036854775807", "7e9223372036854775808", "7e18446744073709551616",
          "1e99999999999999999999", "-1e99999999999999999999", "1e-99999999999999999999",
          "-123e-99999999999999999999", "0e99999999999999999999", "0e-99999999999999999999",
          "1e-9223372036854775808", "9e-1", "99999e-5"})
        EXPECT_EQ(unsignedFromJsonNumber(token), 0U) << token;
    EXPECT_EQ(unsignedFromJsonNumber("7e00000000000000000000000000000000000001"), 70U);
}

TEST(JsonNumber, agreesWithWideArithmeticOnAHundredDigits) {
    Random random(1);
    for (int round = 0; round < 500; ++round) {
        const Decimal decimal{random.below(2) == 0, "1" + randomDigits(random, 99), "", 0};
        EXPECT_EQ(unsignedFromJsonNumber(decimal.token()), decimal.expected()) << decimal.token();
    }
}

TEST(JsonNumber, agreesWithWideArithmeticOnRandomNumbers) {
    Random random(2);
    for (int round = 0; round < 20'000; ++round) {
        const bool small = random.below(4) == 0;
        const Decimal decimal{
            random.below(2) == 0,
            small ? "0" : std::to_string(random.below(9) + 1) + randomDigits(random, random.below(40)),
            randomDigits(random, random.below(30)), static_cast<int>(random.below(200)) - 80};
        ASSERT_EQ(unsignedFromJsonNumber(decimal.token()), decimal.expected()) << decimal.token();
    }
}

TEST(JsonNumber, countsAsATruthValueWhenItEqualsZeroOrOne) {
    for (const std::string_view token :
         {"0", "-0", "0.0", "-0.000", "0e9", "0e-9", "0.00e99999999999999999999"})
        EXPECT_EQ(booleanFromJsonNumber(token), false) << token;
    for (const std::string_view token : {"1", "1.0", "1.000", "10e-1", "0.1e1", "1e0", "1e-0", "100e-2",
                                         "0.001e3", "0.0010e+3", "1000000000000000000000000000000e-30"})
        EXPECT_EQ(booleanFromJsonNumber(token), true) << token;
}

TEST(JsonNumber, isNoTruthValueOtherwise) {
    for (const std::string_view token :
         {"-1", "-1.0", "2", "10", "0.1", "1.0001", "0.9999", "11e-1", "1e1", "1e-1", "0.1e2", "10e-2",
          "0.11e1", "101e-2", "1e99999999999999999999", "1e-99999999999999999999", "18446744073709551617",
          "-10e-1"})
        EXPECT_EQ(booleanFromJsonNumber(token), std::nullopt) << token;
}

} // namespace
} // namespace tavel
