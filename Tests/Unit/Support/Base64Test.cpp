#include "Support/Base64.h"

#include "Tests/Unit/Fixtures/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavel {
namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string encoded(std::string_view bytes) {
    std::string text;
    appendBase64(text, bytes);
    return text;
}

std::string encodedWithEscapes(std::string_view bytes) {
    std::string text;
    appendEscapedBase64(text, bytes);
    return text;
}

std::optional<std::string> decoded(std::string_view text) {
    const auto bytes = decodeBase64(text);
    return bytes ? std::optional<std::string>(bytes->view()) : std::nullopt;
}

/// Works bit by bit: slow, and independent of the tables in the tested code.
std::string naivelyEncoded(std::string_view bytes) {
    std::string text;
    unsigned bits = 0;
    unsigned count = 0;
    for (const char c : bytes) {
        for (unsigned bit = 8; bit-- > 0;) {
            bits = bits << 1 | ((static_cast<unsigned char>(c) >> bit) & 1U);
            if (++count == 6) {
                text += alphabet[bits];
                bits = count = 0;
            }
        }
    }
    if (count > 0)
        text += alphabet[bits << (6 - count)];
    return text;
}

/// Completes the last group with padding first, as a sender may omit it. Then accepts padding only where the
/// last group lacks one or two bytes.
std::optional<std::string> naivelyDecoded(std::string text) {
    while (text.size() % 4 != 0)
        text += '=';
    const std::size_t end = text.find('=');
    const std::string_view padding = end == std::string::npos ? "" : std::string_view(text).substr(end);
    if (!padding.empty() && padding != "=" && padding != "==")
        return std::nullopt;
    std::string bytes;
    unsigned bits = 0;
    unsigned count = 0;
    for (const char c : text.substr(0, end)) {
        const std::size_t value = alphabet.find(c);
        if (value == std::string_view::npos)
            return std::nullopt;
        for (unsigned bit = 6; bit-- > 0;) {
            bits = bits << 1 | (static_cast<unsigned>(value) >> bit & 1U);
            if (++count == 8) {
                bytes += static_cast<char>(static_cast<unsigned char>(bits));
                bits = count = 0;
            }
        }
    }
    return bytes;
}

TEST(Base64, encodesTheVectorsOfRfc4648WithoutTheirPadding) {
    EXPECT_EQ(encoded(""), "");
    EXPECT_EQ(encoded("f"), "Zg");
    EXPECT_EQ(encoded("fo"), "Zm8");
    EXPECT_EQ(encoded("foo"), "Zm9v");
    EXPECT_EQ(encoded("foob"), "Zm9vYg");
    EXPECT_EQ(encoded("fooba"), "Zm9vYmE");
    EXPECT_EQ(encoded("foobar"), "Zm9vYmFy");
}

TEST(Base64, decodesTheVectorsOfRfc4648) {
    EXPECT_EQ(decoded(""), "");
    EXPECT_EQ(decoded("Zg=="), "f");
    EXPECT_EQ(decoded("Zm8="), "fo");
    EXPECT_EQ(decoded("Zm9v"), "foo");
    EXPECT_EQ(decoded("Zm9vYg=="), "foob");
    EXPECT_EQ(decoded("Zm9vYmE="), "fooba");
    EXPECT_EQ(decoded("Zm9vYmFy"), "foobar");
}

TEST(Base64, encodesEveryLengthAsTheNaiveEncoderDoes) {
    Random random(1);
    for (std::size_t size = 0; size <= 300; ++size) {
        const std::string bytes = random.bytes(size);
        EXPECT_EQ(encoded(bytes), naivelyEncoded(bytes)) << size << " bytes";
    }
}

TEST(Base64, givesBackEveryLengthThatItEncoded) {
    Random random(2);
    for (std::size_t size = 0; size <= 300; ++size) {
        const std::string bytes = random.bytes(size);
        const std::string text = encoded(bytes);
        const std::size_t missing = (4 - text.size() % 4) % 4;
        for (std::size_t padding = 0; padding <= missing; ++padding)
            EXPECT_EQ(decoded(text + std::string(padding, '=')), bytes) << size << " bytes, " << padding;
        EXPECT_EQ(decoded(text + std::string(missing + 1, '=')), std::nullopt) << size << " bytes";
    }
}

TEST(Base64, joinsThePiecesThatItEncodesLargeInputIn) {
    Random random(3);
    for (const std::size_t edge : {std::size_t{3} * 1024, std::size_t{6} * 1024, std::size_t{96} * 1024}) {
        for (std::size_t size = edge - 4; size <= edge + 4; ++size) {
            const std::string bytes = random.bytes(size);
            const std::string text = encoded(bytes);
            ASSERT_EQ(text, naivelyEncoded(bytes)) << size << " bytes";
            ASSERT_EQ(decoded(text), bytes) << size << " bytes";
        }
    }
}

TEST(Base64, escapesEverySlashOfALargeInput) {
    const std::string bytes(10'000, '\xFF'); // encodes to slashes, except for the last character
    std::string expected;
    for (const char c : naivelyEncoded(bytes)) {
        if (c == '/')
            expected += "\\/";
        else
            expected += c;
    }
    ASSERT_GT(expected.size(), 26'000U);
    EXPECT_EQ(encodedWithEscapes(bytes), expected);
}

TEST(Base64, escapesASlashInTheLastPartialGroup) {
    EXPECT_EQ(encodedWithEscapes("\xFF"), "\\/w");
    EXPECT_EQ(encodedWithEscapes("\xFF\xFF"), "\\/\\/8");
}

TEST(Base64, appendsToTheTextThatIsThere) {
    std::string text = R"("a/b":")";
    appendEscapedBase64(text, "\xFF\xFE");
    EXPECT_EQ(text, R"("a/b":"\/\/4)");
}

TEST(Base64, takesPaddingInFullInPartOrNotAtAll) {
    for (const std::string_view text : {"aG", "aG=", "aG=="})
        EXPECT_EQ(decoded(text), "h") << text;
    for (const std::string_view text : {"aGk", "aGk="})
        EXPECT_EQ(decoded(text), "hi") << text;
}

TEST(Base64, refusesPaddingThatDoesNotBelongThere) {
    for (const std::string_view text : {"aGkA=", "aGkA==", "aGkA===", "aGkA====", "aGk==", "aGk===", "aG===",
                                        "aG====", "a=", "a==", "a==="})
        EXPECT_EQ(decoded(text), std::nullopt) << text;
}

TEST(Base64, refusesASingleCharacterBehindTheLastGroup) {
    EXPECT_EQ(decoded("a"), std::nullopt);
    EXPECT_EQ(decoded("aGkAa"), std::nullopt);
}

TEST(Base64, refusesPaddingAlone) {
    for (const std::string_view text : {"=", "==", "===", "=====", "========"})
        EXPECT_EQ(decoded(text), std::nullopt) << text;
}

TEST(Base64, refusesFourPaddingCharactersAlone) {
    EXPECT_EQ(decoded("===="), std::nullopt);
}

TEST(Base64, refusesPaddingInsideTheText) {
    for (const std::string_view text :
         {"=aGk", "a=Gk", "aG=k", "aG==aGk=", "aGk=aGk=", "aGk=aGkA", "=AAA", "A=A=", "aG=k="})
        EXPECT_EQ(decoded(text), std::nullopt) << text;
}

TEST(Base64, judgesEveryByteAtEveryPositionAsTheNaiveDecoderDoes) {
    // The changed group is in the middle of whole groups, or the last one with one or two characters missing.
    for (const std::string_view seed : {"QUJDREVGR0hJ", "QUJDREVGR0h", "QUJDREVGR0"}) {
        for (std::size_t position = 0; position < seed.size(); ++position) {
            for (unsigned value = 0; value < 256; ++value) {
                std::string text(seed);
                text[position] = static_cast<char>(static_cast<unsigned char>(value));
                ASSERT_EQ(decoded(text), naivelyDecoded(text))
                    << "byte " << value << " at position " << position << " of " << seed;
            }
        }
    }
}

TEST(Base64, refusesWhitespaceAnywhere) {
    for (const char space : std::string_view(" \t\r\n\f\v")) {
        for (std::size_t position = 0; position <= 8; ++position) {
            std::string text = "Zm9vYmFy";
            text.insert(position, 1, space);
            EXPECT_EQ(decoded(text), std::nullopt) << "at " << position;
        }
    }
    EXPECT_EQ(decoded("Zm9v\r\nYmFy"), std::nullopt);
}

TEST(Base64, refusesTheUrlAlphabet) {
    EXPECT_EQ(decoded("--__"), std::nullopt);
    EXPECT_EQ(decoded("AA-A"), std::nullopt);
    EXPECT_EQ(decoded("AA_"), std::nullopt);
}

TEST(Base64, ignoresTheBitsThatNoByteTakesUp) {
    for (const std::string_view text : {"aA", "aB", "aP", "aB==", "aP=="})
        EXPECT_EQ(decoded(text), "h") << text;
    for (const std::string_view text : {"aGk", "aGl", "aGm", "aGn="})
        EXPECT_EQ(decoded(text), "hi") << text;
}

TEST(Base64, refusesOneWrongCharacterInALargeText) {
    const std::string good(1'000'000, 'A');
    ASSERT_EQ(decoded(good), std::string(750'000, '\0'));
    for (const std::size_t position : {std::size_t{0}, std::size_t{499'999}, std::size_t{999'999}}) {
        std::string text = good;
        text[position] = '*';
        EXPECT_EQ(decoded(text), std::nullopt) << "at " << position;
    }
}

TEST(Base64, judgesRandomTextsAsTheNaiveDecoderDoes) {
    Random random(4);
    // Mostly valid characters, because otherwise hardly any random text would be accepted.
    const std::string characters = std::string(alphabet) + "====-";
    int accepted = 0;
    constexpr int rounds = 20'000;
    for (int round = 0; round < rounds; ++round) {
        std::string text;
        for (std::size_t left = random.below(12); left > 0; --left)
            text += characters[random.below(characters.size())];
        ASSERT_EQ(decoded(text), naivelyDecoded(text)) << text;
        accepted += decoded(text) ? 1 : 0;
    }
    EXPECT_GT(accepted, rounds / 10);
    EXPECT_LT(accepted, rounds - rounds / 10);
}

} // namespace
} // namespace tavel
