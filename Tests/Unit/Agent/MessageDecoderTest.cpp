#include "TavelClipboardAgent/main/Protocol/MessageDecoder.h"

#include "TavelClipboardAgent/main/Protocol/Encoder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tavel {
namespace {

using Paths = std::vector<std::string>;

/// nullopt unless the line is a message of that type.
template <typename Message>
std::optional<Message> decodedAs(std::string_view line) {
    const auto message = decodeMessage(line);
    const Message* const one = message ? std::get_if<Message>(&*message) : nullptr;
    return one == nullptr ? std::nullopt : std::optional(*one);
}

template <typename Message>
std::optional<Message> decodedAgain(const Message& message) {
    return decodedAs<Message>(encodeMessage(message).value());
}

bool isRefused(std::string_view line) {
    return !decodeMessage(line).has_value();
}

TEST(MessageDecoder, readsAReply) {
    const auto reply = decodedAs<Reply>(
        R"({"request_id":18446744073709551615,"ok":false,"reason":"Écriture \/ impossible","sequence":43})");
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->requestID, UINT64_MAX);
    EXPECT_FALSE(reply->ok);
    EXPECT_EQ(reply->reason, "Écriture / impossible");
    EXPECT_EQ(reply->sequence, 43U);
}

TEST(MessageDecoder, readsAnAnnouncement) {
    const auto announcement = decodedAs<event::Announcement>(
        R"({"event":"change","kind":"unsupported","marker":"m","sequence":7})");
    ASSERT_TRUE(announcement);
    EXPECT_EQ(announcement->marker, "m");
    EXPECT_EQ(announcement->sequence, 7U);
}

TEST(MessageDecoder, readsTextWithoutPadding) {
    const auto change = decodedAs<event::TextChange>(
        R"({"event":"change","text_b64":"YQ","marker":"","bytes":1,"sequence":7})");
    ASSERT_TRUE(change);
    EXPECT_EQ(change->text.view(), "a");
    EXPECT_EQ(change->sequence, 7U);
}

TEST(MessageDecoder, readsPaths) {
    const auto change = decodedAs<event::PathsChange>(
        R"({"event":"change","kind":"files","paths":["\/a b","\/é"],"marker":"","sequence":7})");
    ASSERT_TRUE(change);
    EXPECT_EQ(change->kind, "files");
    EXPECT_EQ(change->paths, (Paths{"/a b", "/é"}));
}

TEST(MessageDecoder, readsPathsOfAKindThatIsNotKnown) {
    const auto change = decodedAs<event::PathsChange>(
        R"({"event":"change","kind":"sounds","paths":[],"marker":"","sequence":7})");
    ASSERT_TRUE(change);
    EXPECT_EQ(change->kind, "sounds");
}

TEST(MessageDecoder, readsTheOtherEvents) {
    const auto log = decodedAs<event::Log>(R"({"event":"log","level":"warning","message":"trop grand"})");
    ASSERT_TRUE(log);
    EXPECT_EQ(log->level, "warning");
    EXPECT_EQ(log->message, "trop grand");
    EXPECT_EQ(decodedAs<event::FileRenamed>(R"({"event":"file_renamed","sequence":9})").value().sequence, 9U);
}

TEST(MessageDecoder, ignoresOtherKeys) {
    EXPECT_TRUE(decodedAs<Reply>(R"({"request_id":1,"ok":true,"x":[{}],"reason":"","sequence":1})"));
}

TEST(MessageDecoder, readsWhatTheEncoderWrites) {
    const auto reply = decodedAgain(Reply{UINT64_MAX, true, "\"é\"\t/\\", 1}).value();
    EXPECT_EQ(reply.requestID, UINT64_MAX);
    EXPECT_TRUE(reply.ok);
    EXPECT_EQ(reply.reason, "\"é\"\t/\\");
    EXPECT_EQ(reply.sequence, 1U);

    const auto announcement = decodedAgain(event::Announcement{"m", UINT64_MAX}).value();
    EXPECT_EQ(announcement.marker, "m");
    EXPECT_EQ(announcement.sequence, UINT64_MAX);

    for (const std::string_view text : {"", "a", "ab", "???", "Voilà\n"}) {
        const auto change = decodedAgain(event::TextChange{Bytes::copyOf(text), "m", 2}).value();
        EXPECT_EQ(change.text.view(), text);
        EXPECT_EQ(change.marker, "m");
        EXPECT_EQ(change.sequence, 2U);
    }

    for (const Paths& paths : {Paths{}, Paths{"/"}, Paths{"/a\nb", "/\"é\"", "/\\"}}) {
        const auto change = decodedAgain(event::PathsChange{"formats", paths, "m", 3}).value();
        EXPECT_EQ(change.kind, "formats");
        EXPECT_EQ(change.paths, paths);
        EXPECT_EQ(change.marker, "m");
        EXPECT_EQ(change.sequence, 3U);
    }

    const auto log = decodedAgain(event::Log{"warning", "trop grand (>4 Mio)"}).value();
    EXPECT_EQ(log.level, "warning");
    EXPECT_EQ(log.message, "trop grand (>4 Mio)");
    EXPECT_EQ(decodedAgain(event::FileRenamed{4}).value().sequence, 4U);
}

TEST(MessageDecoder, refusesEverythingElse) {
    EXPECT_TRUE(isRefused(""));
    EXPECT_TRUE(isRefused("not JSON"));
    EXPECT_TRUE(isRefused("[]"));
    EXPECT_TRUE(isRefused(R"({"event":"surprise"})"));
    EXPECT_TRUE(isRefused(R"({"event":"change","kind":"files","marker":"","sequence":7})"));
    EXPECT_TRUE(isRefused(R"({"event":"change","kind":"files","paths":[1],"marker":"","sequence":7})"));
    EXPECT_TRUE(isRefused(R"({"event":"change","text_b64":"!","marker":"","sequence":7})"));
    EXPECT_TRUE(isRefused(R"({"event":"change","kind":"unsupported","marker":"","sequence":-1})"));
    EXPECT_TRUE(isRefused(R"({"event":"change","kind":"unsupported","sequence":1})"));
    EXPECT_TRUE(isRefused(R"({"event":"log","level":"warning"})"));
    EXPECT_TRUE(isRefused(R"({"event":"file_renamed"})"));
    EXPECT_TRUE(isRefused(R"({"request_id":1,"ok":1,"reason":"","sequence":1})"));
    EXPECT_TRUE(isRefused(R"({"request_id":1,"ok":true,"reason":"","sequence":1}{})"));
}

TEST(MessageDecoder, readsTheNumberAndTheNameOfACommand) {
    const auto head = decodeCommandHead(R"({"x":0,"command":"unheard \"of\"","request_id":12})");
    ASSERT_TRUE(head);
    EXPECT_EQ(head->requestID, 12U);
    EXPECT_EQ(head->name, "unheard \"of\"");
    for (const std::string_view line :
         {"{nonsense", "[]", R"({"request_id":1})", R"({"command":7,"request_id":1})",
          R"({"command":"ping"})", R"({"command":"ping","request_id":"1"})",
          R"({"command":"ping","request_id":-1})"})
        EXPECT_FALSE(decodeCommandHead(line)) << line;
}

} // namespace
} // namespace tavel
