#include "Support/Uuid.h"

#include <gtest/gtest.h>

#include <array>
#include <set>
#include <string>
#include <string_view>

namespace tavel {
namespace {

constexpr int rounds = 2000;

TEST(Uuid, hasTheCanonicalFormInUpperCase) {
    for (int round = 0; round < rounds; ++round) {
        const std::string text = makeUuid();
        ASSERT_EQ(text.size(), 36U) << text;
        for (std::size_t i = 0; i < text.size(); ++i) {
            const bool hyphen = i == 8 || i == 13 || i == 18 || i == 23;
            const std::string_view allowed = hyphen ? "-" : "0123456789ABCDEF";
            ASSERT_NE(allowed.find(text[i]), std::string_view::npos) << text << " at " << i;
        }
    }
}

TEST(Uuid, isOfVersion4AndItsVariant) {
    for (int round = 0; round < rounds; ++round) {
        const std::string text = makeUuid();
        ASSERT_EQ(text[14], '4') << text;
        ASSERT_NE(std::string_view("89AB").find(text[19]), std::string_view::npos) << text;
    }
}

TEST(Uuid, isToldFromOtherTexts) {
    for (int round = 0; round < rounds; ++round)
        ASSERT_TRUE(isUuid(makeUuid()));
    const std::string uuid = "0123ABCD-4567-4EF0-89AB-CDEF01234567";
    EXPECT_TRUE(isUuid(uuid));
    for (std::size_t i = 0; i < uuid.size(); ++i) {
        for (const char other : std::string_view("g/:@G`a \0", 9)) {
            std::string changed = uuid;
            changed[i] = other;
            EXPECT_FALSE(isUuid(changed)) << changed;
        }
    }
    EXPECT_FALSE(isUuid("0123ABCD-4567-1EF0-89AB-CDEF01234567")) << "another version";
    EXPECT_FALSE(isUuid("0123ABCD-4567-4EF0-79AB-CDEF01234567")) << "another variant";
    EXPECT_FALSE(isUuid(uuid.substr(1)));
    EXPECT_FALSE(isUuid(uuid + "0"));
    EXPECT_FALSE(isUuid(""));
}

TEST(Uuid, isNeverTheSameTwice) {
    std::set<std::string> seen;
    for (int round = 0; round < rounds; ++round)
        seen.insert(makeUuid());
    EXPECT_EQ(seen.size(), static_cast<std::size_t>(rounds));
}

TEST(Uuid, usesEveryDigitAtEveryRandomPosition) {
    std::array<std::set<char>, 36> seen;
    for (int round = 0; round < rounds; ++round) {
        const std::string text = makeUuid();
        for (std::size_t i = 0; i < text.size(); ++i)
            seen[i].insert(text[i]);
    }
    for (std::size_t i = 0; i < seen.size(); ++i) {
        const bool fixed = i == 8 || i == 13 || i == 14 || i == 18 || i == 23;
        EXPECT_EQ(seen[i].size(), fixed ? 1U : i == 19 ? 4U : 16U) << "at " << i;
    }
}

} // namespace
} // namespace tavel
