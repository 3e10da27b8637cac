#include "Support/Base64Stream.h"

#include "Support/Base64.h"
#include "Tests/Unit/Fixtures/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace tavel {
namespace {

using State = Base64Stream::State;

constexpr std::size_t plenty = 10'000'000;

struct Outcome {
    State state = State::open;
    std::string bytes;     // of a string that ended
    std::string text;      // the same again
    std::string taken;     // of a string that was refused
    std::string following; // behind what was taken

    bool operator==(const Outcome&) const = default;
};

/// Hands the text over in pieces of that size. What a stream leaves of one comes again with the next.
Outcome streamed(std::string_view text, std::size_t pieceSize, std::size_t mostBytes = plenty) {
    Base64Stream stream(mostBytes);
    std::string waiting;
    for (;;) {
        waiting += text.substr(0, pieceSize);
        text.remove_prefix(std::min(pieceSize, text.size()));
        const auto progress = stream.take(waiting);
        waiting.erase(0, progress.taken);
        if (progress.state == State::open && !text.empty())
            continue;
        Outcome outcome{
            progress.state, {}, {}, std::string(stream.takenSize(), '?'), waiting + std::string(text)};
        stream.writeTaken(outcome.taken.data());
        if (progress.state == State::ended) {
            const DecodedBase64 decoded = std::move(stream).finish();
            outcome.bytes = decoded.bytes.view();
            outcome.text = decoded.text();
        }
        return outcome;
    }
}

std::string withPlainSlashes(std::string text) {
    for (std::size_t at = 0; (at = text.find("\\/", at)) != std::string::npos;)
        text.erase(at, 1);
    return text;
}

/// Base64 with each slash escaped.
std::string encoded(std::string_view bytes) {
    std::string text;
    appendEscapedBase64(text, bytes);
    return text;
}

/// Expects that the string is judged as its whole text is, in pieces of any size.
void expectTheSameInPieces(const std::string& string) {
    const std::string text = withPlainSlashes(string);
    const auto whole = decodeBase64(text);
    for (std::size_t pieceSize = 1; pieceSize <= string.size() + 2; ++pieceSize) {
        const Outcome outcome = streamed(string + "\",1", pieceSize);
        ASSERT_EQ(outcome.state == State::ended, whole.has_value()) << string << " by " << pieceSize;
        if (whole) {
            ASSERT_EQ(outcome.bytes, whole->view()) << string << " by " << pieceSize;
            ASSERT_EQ(outcome.text, text) << string << " by " << pieceSize;
            ASSERT_EQ(outcome.following, "\",1") << string << " by " << pieceSize;
        } else {
            ASSERT_EQ(withPlainSlashes(outcome.taken + outcome.following), text + "\",1")
                << string << " by " << pieceSize;
        }
    }
}

TEST(Base64Stream, decodesTextsInPiecesOfAnySize) {
    for (const std::string_view text : {"", "Zg", "Zg=", "Zg==", "Zm8", "Zm8=", "Zm9v", "Zm9vYmFyZm9vYmE",
                                        "Zm9vYmFyZm9vYg==", R"(\/\/\/\/)", R"(\/\/)", R"(Pz8\/Pz8\/Pz8\/)",
                                        "Pz8/Pz8\\/Pz8/", R"(AAA\/\/w==)", R"(AAA\/\/8)"})
        expectTheSameInPieces(std::string(text));
}

TEST(Base64Stream, ignoresTheBitsThatNoByteTakesUpAndRemembersThem) {
    for (const std::string_view text : {"AAAAaB", "AAAAaP==", "AAAAaGl", "AAAAaGn="})
        expectTheSameInPieces(std::string(text));
}

TEST(Base64Stream, refusesPaddingThatDoesNotBelongThere) {
    for (const std::string_view text :
         {"=", "==", "====", "a=", "a==", "a===", "aG===", "aGk==", "aGkA=", "aGkA====", "aG=k", "a=Gk",
          "=aGk", "aG==aGk=", "aGk=aGkA", "A=A=", "aGkAa"})
        expectTheSameInPieces(std::string(text));
}

TEST(Base64Stream, judgesEveryByteAtEveryPositionAsTheWholeTextIsJudged) {
    for (const std::string_view seed : {"QUJDREVGR0hJ", "QUJDREVGR0h", "QUJDREVGR0"}) {
        for (std::size_t position = 0; position < seed.size(); ++position) {
            for (unsigned value = 0; value < 256; ++value) {
                std::string text(seed);
                text[position] = static_cast<char>(static_cast<unsigned char>(value));
                if (value != '"' && value != '\\')
                    expectTheSameInPieces(text);
            }
        }
    }
}

TEST(Base64Stream, refusesOtherEscapes) {
    for (const std::string_view escape : {R"(\u0041)", R"(\n)", R"(\")", R"(\\)", R"(\\/)"}) {
        for (const std::string_view before : {"", "A", "AA", "AAA", "AAAA", R"(AA\/)"}) {
            const std::string text = std::string(before) + std::string(escape) + "AAAA\"";
            for (std::size_t pieceSize = 1; pieceSize <= text.size(); ++pieceSize) {
                const Outcome outcome = streamed(text, pieceSize);
                ASSERT_EQ(outcome.state, State::refused) << text;
                // Nothing but slashes' own backslashes may be lost.
                ASSERT_TRUE(outcome.following.ends_with(std::string(escape) + "AAAA\"")) << text;
                ASSERT_EQ(withPlainSlashes(outcome.taken + outcome.following), withPlainSlashes(text));
            }
        }
    }
}

TEST(Base64Stream, refusesALineFeedAtOnce) {
    for (const std::string_view before : {"", "A", "AA", "AAA", "AA="}) {
        Base64Stream stream(plenty);
        EXPECT_EQ(stream.take(before).state, State::open);
        EXPECT_EQ(stream.take("\n").state, State::refused) << before;
    }
}

TEST(Base64Stream, leavesABackslashForItsSuccessor) {
    Base64Stream stream(plenty);
    EXPECT_EQ(stream.take(R"(AAA\)").taken, 3U);
    EXPECT_EQ(stream.take(R"(\)").taken, 0U);
    EXPECT_EQ(stream.take(R"(\/\)").taken, 2U);
    EXPECT_EQ(stream.take(R"(\"")").state, State::refused);
}

TEST(Base64Stream, joinsTheParts) {
    Random random(5);
    constexpr std::size_t part = std::size_t{8} * 1024;
    for (std::size_t size = part - 6; size <= part + 6; ++size) {
        const std::string bytes(size / 4 * 3, '\xFF'); // each character an escaped slash
        ASSERT_TRUE(streamed(encoded(bytes) + '"', plenty).bytes == bytes) << size;
        // The last escape of the first part is split, or not.
        const std::string mixed = random.bytes(size % 7) + random.bytes(size) + bytes;
        ASSERT_TRUE(streamed(encoded(mixed) + '"', plenty).bytes == mixed) << size;
        ASSERT_TRUE(streamed(encoded(mixed) + '"', 1 + random.below(30'000)).bytes == mixed) << size;
    }
}

TEST(Base64Stream, refusesOneWrongCharacterLateInALongText) {
    std::string text(1 << 20, 'A');
    text[text.size() - 100] = '*';
    for (const std::size_t pieceSize : {std::size_t{1000}, std::size_t{65'536}, plenty}) {
        const Outcome outcome = streamed(text + '"', pieceSize);
        EXPECT_EQ(outcome.state, State::refused);
        EXPECT_TRUE(outcome.taken + outcome.following == text + '"') << pieceSize;
    }
}

TEST(Base64Stream, keepsAllOfATextOfTheLongestSize) {
    for (const std::size_t limit : {0U, 1U, 2U, 3U, 100U, 30'000U}) {
        const std::string bytes(limit, 'x');
        EXPECT_TRUE(streamed(encoded(bytes) + '"', plenty, limit).bytes == bytes) << limit;
        EXPECT_TRUE(streamed(encoded(bytes) + '"', 7, limit).bytes == bytes) << limit;
    }
}

TEST(Base64Stream, keepsLittleMoreOfALongerText) {
    for (const std::size_t limit : {0U, 1U, 2U, 3U, 100U, 30'000U}) {
        for (const std::size_t more : {1U, 2U, 3U, 4U, 100'000U}) {
            const std::string bytes(limit + more, 'x');
            for (const std::size_t pieceSize : {std::size_t{13}, plenty}) {
                const Outcome outcome = streamed(encoded(bytes) + '"', pieceSize, limit);
                EXPECT_EQ(outcome.state, State::ended);
                EXPECT_GT(outcome.bytes.size(), limit);
                EXPECT_LE(outcome.bytes.size(), limit + 3);
                EXPECT_TRUE(bytes.starts_with(outcome.bytes));
            }
        }
    }
}

TEST(Base64Stream, checksWhatItDoesNotKeep) {
    const std::string text(100'000, 'A');
    EXPECT_EQ(streamed(text + "*\"", plenty, 100).state, State::refused);
    EXPECT_EQ(streamed(text + "A\"", plenty, 100).state, State::refused);
}

/// A text that was cut must not become an acceptable one.
TEST(Base64Stream, writesMoreThanTheLongestSizeOfALongerText) {
    for (const std::size_t limit : {0U, 1U, 2U, 3U, 100U}) {
        const Outcome outcome = streamed(std::string(100'000, 'A') + "\\u0041\"", plenty, limit);
        EXPECT_EQ(outcome.state, State::refused);
        EXPECT_GT(outcome.taken.size() / 4 * 3, limit);
    }
}

TEST(Base64Stream, givesBytesThatOutliveIt) {
    Bytes bytes;
    {
        Base64Stream stream(plenty);
        static_cast<void>(stream.take("Zm9vYmFy\""));
        bytes = std::move(stream).finish().bytes;
    }
    EXPECT_EQ(bytes.view(), "foobar");
}

} // namespace
} // namespace tavel
