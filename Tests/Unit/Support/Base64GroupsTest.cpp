#include "Support/Base64Groups.h"

#include "Support/Base64Blocks.h"
#include "Tests/Unit/Fixtures/GuardedMemory.h"
#include "Tests/Unit/Fixtures/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {
namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// More than three of the largest blocks, and the characters that are left to be done one by one.
constexpr std::size_t longest = 330;

std::string naivelyEncoded(std::string_view bytes) {
    std::string text;
    for (std::size_t i = 0; i + 3 <= bytes.size(); i += 3) {
        std::size_t bits = 0;
        for (const char c : bytes.substr(i, 3))
            bits = bits * 256 + static_cast<unsigned char>(c);
        for (const std::size_t unit : {64U * 64 * 64, 64U * 64, 64U, 1U})
            text += alphabet[bits / unit % 64];
    }
    return text;
}

/// The bytes of the groups before the first that is not whole or has a wrong character.
std::string naivelyDecoded(std::string_view text) {
    std::string bytes;
    for (; text.size() >= 4; text.remove_prefix(4)) {
        std::size_t bits = 0;
        for (const char c : text.substr(0, 4)) {
            const std::size_t value = alphabet.find(c);
            if (value == std::string_view::npos)
                return bytes;
            bits = bits * 64 + value;
        }
        for (const std::size_t unit : {256U * 256, 256U, 1U})
            bytes += static_cast<char>(static_cast<unsigned char>(bits / unit % 256));
    }
    return bytes;
}

struct Unescaped {
    std::size_t taken = 0;
    std::string copy;
};

Unescaped naivelyUnescaped(std::string_view text) {
    Unescaped result;
    for (std::string_view rest = text; !rest.empty(); rest = text.substr(result.taken)) {
        if (rest.starts_with("\\/"))
            ++result.taken;
        else if (rest.front() == '"' || rest.front() == '\\')
            break;
        result.copy += text[result.taken++];
    }
    return result;
}

std::string naivelyEscaped(std::string_view text) {
    std::string result;
    for (const char c : text)
        result += c == '/' ? std::string("\\/") : std::string(1, c);
    return result;
}

/// Base64 in which so many of a thousand characters are slashes, as JSON writers escape them.
std::string escapedText(Random& random, std::size_t size, std::size_t slashes) {
    std::string text;
    while (text.size() < size)
        text +=
            random.below(1000) < slashes ? std::string("\\/") : std::string(1, alphabet[random.below(63)]);
    text.resize(size);
    return text;
}

constexpr std::array<std::size_t, 6> slashRates{0, 16, 60, 130, 500, 1000};

/// Compares the loops for every kind of vector that this processor has with naive ones. Input and output lie
/// against memory that cannot be accessed, at both ends.
class Base64Groups : public testing::Test {
protected:
    Base64Groups() {
        for (const Base64Blocks& blocks : base64Blocks()) {
            if (blocks.runHere())
                kinds_.push_back(&blocks);
        }
    }

    /// Calls `check` for each kind of vector, with the input and the output at the start of their memory, and
    /// at the end.
    template <class Check>
    void forEachKind(std::string_view input, std::size_t room, const Check& check) {
        for (const Base64Blocks* const kind : kinds_) {
            for (const bool atEnd : {false, true}) {
                const std::span<char> in =
                    atEnd ? in_.all().last(input.size()) : in_.all().first(input.size());
                const std::span<char> out = atEnd ? out_.all().last(room) : out_.all().first(room);
                std::ranges::copy(input, in.data());
                if (!atEnd)
                    std::ranges::fill(out_.all().subspan(room, behind.size()), unwritten);
                SCOPED_TRACE(std::string(kind->name) + (atEnd ? ", at the end" : ", at the start"));
                check(*kind, std::string_view(in.data(), in.size()), out.data());
                if (!atEnd) {
                    ASSERT_EQ(std::string_view(out.data() + room, behind.size()), behind);
                }
            }
        }
    }

    void checkEncoding(std::string_view bytes) {
        const std::string expected = naivelyEncoded(bytes);
        forEachKind(bytes, expected.size(), [&](const Base64Blocks& kind, std::string_view in, char* out) {
            ASSERT_EQ(encodeBase64Groups(kind, in, out), out + expected.size());
            ASSERT_EQ(std::string_view(out, expected.size()), expected);
        });
    }

    void checkDecoding(std::string_view text) {
        const std::string expected = naivelyDecoded(text);
        forEachKind(text, expected.size(), [&](const Base64Blocks& kind, std::string_view in, char* out) {
            ASSERT_EQ(decodeBase64Groups(kind, in, out), expected.size() / 3 * 4);
            ASSERT_EQ(std::string_view(out, expected.size()), expected);
        });
    }

    void checkUnescaping(std::string_view text) {
        const Unescaped expected = naivelyUnescaped(text);
        forEachKind(text, text.size(), [&](const Base64Blocks& kind, std::string_view in, char* out) {
            const CopiedText copied = copyWithoutSlashEscapes(kind, in, out);
            ASSERT_EQ(copied.taken, expected.taken);
            ASSERT_EQ(std::string_view(out, copied.written), expected.copy);
        });
    }

    void checkEscaping(std::string_view text) {
        const std::string expected = naivelyEscaped(text);
        forEachKind(text, 2 * text.size(), [&](const Base64Blocks& kind, std::string_view in, char* out) {
            ASSERT_EQ(copyWithSlashEscapes(kind, in, out), out + expected.size());
            ASSERT_EQ(std::string_view(out, expected.size()), expected);
        });
    }

    static constexpr char unwritten = '#';
    const std::string behind = std::string(256, unwritten); // the room

    Random random_{1};
    std::vector<const Base64Blocks*> kinds_;
    GuardedMemory in_{8192};
    GuardedMemory out_{16384};
};

TEST_F(Base64Groups, haveVectorsOfEachProcessorThatIsSupported) {
#if defined(__x86_64__)
    EXPECT_EQ(base64Blocks().size(), 4U); // of 64, 32 and 16 bytes, and none
#elif defined(__aarch64__)
    EXPECT_EQ(base64Blocks().size(), 2U);
#endif
    EXPECT_EQ(kinds_.back(), &base64Blocks().back());
}

TEST_F(Base64Groups, useVectorsForAllButTheEnd) {
    const std::string bytes = random_.bytes(3000);
    const std::string escaped = escapedText(random_, 3000, 16);
    const std::string text = naivelyEncoded(bytes);
    std::string out(8000, unwritten);
    for (const Base64Blocks* const kind : std::span(kinds_).first(kinds_.size() - 1)) {
        SCOPED_TRACE(kind->name);
        EXPECT_GT(kind->encode(bytes.data(), 3000, out.data()), 2800U);
        EXPECT_GT(kind->decode(text.data(), 4000, out.data()), 3800U);
        EXPECT_GT(kind->copyWithoutSlashEscapes(escaped.data(), 3000, out.data()).taken, 2800U);
        EXPECT_GT(kind->copyWithSlashEscapes(text.data(), 4000, out.data()).taken, 3800U);
    }
}

TEST_F(Base64Groups, encodeEveryLength) {
    for (std::size_t size = 0; size <= longest; ++size)
        ASSERT_NO_FATAL_FAILURE(checkEncoding(random_.bytes(size))) << size << " bytes";
}

TEST_F(Base64Groups, encodeEveryGroup) {
    std::string bytes;
    for (std::size_t value = 0; value < 64 * 64; value += 2) {
        const std::size_t bits = value << 12 | (value + 1);
        for (const std::size_t unit : {256U * 256, 256U, 1U})
            bytes += static_cast<char>(static_cast<unsigned char>(bits / unit % 256));
    }
    checkEncoding(bytes);
}

TEST_F(Base64Groups, decodeEveryLength) {
    for (std::size_t size = 0; size <= longest; ++size) {
        const std::string text = naivelyEncoded(random_.bytes(longest)).substr(0, size);
        ASSERT_NO_FATAL_FAILURE(checkDecoding(text)) << size << " characters";
    }
}

TEST_F(Base64Groups, decodeInPlace) {
    for (std::size_t size = 0; size <= longest; size += 4) {
        const std::string text = naivelyEncoded(random_.bytes(longest)).substr(0, size);
        const std::string expected = naivelyDecoded(text);
        forEachKind(text, 0, [&](const Base64Blocks& kind, std::string_view in, char*) {
            char* const out = in_.all().data() + (in.data() - in_.all().data());
            ASSERT_EQ(decodeBase64Groups(kind, in, out), size);
            ASSERT_EQ(std::string_view(out, expected.size()), expected);
        });
    }
}

TEST_F(Base64Groups, decodeNoneOfTheOtherCharacters) {
    const std::string good = naivelyEncoded(random_.bytes(96));
    for (std::size_t position = 0; position < 64; position += 5) {
        for (unsigned value = 0; value < 256; ++value) {
            std::string text = good;
            text[position] = static_cast<char>(static_cast<unsigned char>(value));
            ASSERT_NO_FATAL_FAILURE(checkDecoding(text)) << "byte " << value << " at " << position;
        }
    }
}

TEST_F(Base64Groups, decodeUpToAWrongCharacterInEveryBlock) {
    const std::string good = naivelyEncoded(random_.bytes(longest));
    for (std::size_t position = 0; position < good.size(); ++position) {
        std::string text = good;
        text[position] = '=';
        ASSERT_NO_FATAL_FAILURE(checkDecoding(text)) << "at " << position;
    }
}

TEST_F(Base64Groups, removeAndAddEscapesInTextsOfEveryLength) {
    for (const std::size_t slashes : slashRates) {
        for (std::size_t size = 0; size <= longest; ++size) {
            const std::string text = escapedText(random_, size, slashes);
            ASSERT_NO_FATAL_FAILURE(checkUnescaping(text)) << text;
            ASSERT_NO_FATAL_FAILURE(checkEscaping(naivelyUnescaped(text).copy)) << text;
        }
    }
}

TEST_F(Base64Groups, removeAndAddEscapesInLongTexts) {
    for (const std::size_t slashes : slashRates) {
        const std::string text = escapedText(random_, 8000, slashes);
        checkUnescaping(text);
        checkEscaping(naivelyUnescaped(text).copy);
    }
}

TEST_F(Base64Groups, copyUpToAQuoteOrAnotherEscapeInEveryBlock) {
    const std::string good = escapedText(random_, longest, 16);
    for (const std::string_view end : {"\"", "\\n", "\\\\", "\\\"", "\\\\/"}) {
        for (std::size_t position = 0; position + end.size() <= good.size(); ++position) {
            std::string text = good;
            text.replace(position, end.size(), end);
            ASSERT_NO_FATAL_FAILURE(checkUnescaping(text)) << end << " at " << position;
        }
    }
}

TEST_F(Base64Groups, copyUpToABackslashAtTheEnd) {
    for (std::size_t size = 0; size <= longest; ++size)
        ASSERT_NO_FATAL_FAILURE(checkUnescaping(std::string(size, 'A') + "\\")) << size;
}

TEST_F(Base64Groups, copyRandomTextsOfTheCharactersThatMatter) {
    constexpr std::string_view characters = "\\////\\\\\"A\x80\xFF";
    for (std::size_t round = 0; round < 2000; ++round) {
        std::string text = escapedText(random_, random_.below(longest), random_.below(400));
        for (std::size_t left = random_.below(20); left > 0 && !text.empty(); --left)
            text[random_.below(text.size())] = characters[random_.below(characters.size())];
        ASSERT_NO_FATAL_FAILURE(checkUnescaping(text)) << text;
        ASSERT_NO_FATAL_FAILURE(checkEscaping(text)) << text;
    }
}

} // namespace
} // namespace tavel
