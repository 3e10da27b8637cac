#include "Support/Base64.h"
#include "Tests/Unit/Agent/Decoding.h"
#include "Tests/Unit/Fixtures/PrintJson.h"
#include "Tests/Unit/Fixtures/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace tavel {
namespace {

using nlohmann::json;

const std::vector<std::string> seeds{
    R"({"command":"ping","request_id":7})",
    R"( { "command" : "quit" , "request_id" : 1.5e1 } )",
    R"({"request_id":18446744073709551615,"command":"discard_pending","x":[1,-0.5,true,false,null,"a",{}]})",
    R"({"command":"configure_file_prompt","request_id":1,"rename_prompt":true,"rename_prompt":false})",
    R"({"command":"write_text","request_id":2,"text_b64":"aGk=","marker":"m\u00e9\ud83d\ude00\n\\\"\/"})",
    R"({"command":"write_image_data","request_id":3,"image_b64":"iVBORw0KGgo"})",
    R"({"command":"write_files","request_id":4,"kind":"files","paths":["\/a","/b c","é"],"marker":"m","expected_sequence":41})",
    R"({"command":"write_files","request_id":5,"paths":[["/a"],{"b":[]}],"x":{"y":{"z":[[],[0]]}},"":""})",
};

/// Likely to make valid JSON invalid, or invalid JSON valid.
constexpr std::array<std::string_view, 62> tokens{"{",
                                                  "}",
                                                  "[",
                                                  "]",
                                                  ",",
                                                  ":",
                                                  "\"",
                                                  "\\",
                                                  "/",
                                                  "0",
                                                  "1",
                                                  "9",
                                                  "-",
                                                  "+",
                                                  ".",
                                                  "e",
                                                  "E",
                                                  "e5",
                                                  "e-3",
                                                  "0.5",
                                                  " ",
                                                  "\t",
                                                  "\n",
                                                  "\r",
                                                  "\f",
                                                  "\v",
                                                  "\x01",
                                                  "\x1F",
                                                  "\x7F",
                                                  "\x80",
                                                  "\xC3",
                                                  "\xC3\xA9",
                                                  "\xED\xA0\x80",
                                                  "\xF0\x9F\x98\x80",
                                                  "\xEF\xBB\xBF",
                                                  "\xFF",
                                                  "true",
                                                  "false",
                                                  "null",
                                                  "nul",
                                                  "tru",
                                                  R"(\u00e9)",
                                                  R"(\u0000)",
                                                  R"(\ud83d)",
                                                  R"(\ude00)",
                                                  R"(\u)",
                                                  R"(\n)",
                                                  R"(\x)",
                                                  R"("")",
                                                  "{}",
                                                  "[]",
                                                  R"("a":)",
                                                  R"(,"a":1)",
                                                  "//",
                                                  "/**/",
                                                  "'",
                                                  "x",
                                                  "NaN",
                                                  R"("paths":)",
                                                  R"("marker":)",
                                                  R"("command":"ping")",
                                                  R"("request_id":7)"};

std::string mutated(Random& random) {
    std::string text = random.oneOf(std::span(seeds));
    for (std::size_t changes = 1 + random.below(4); changes > 0; --changes) {
        const std::size_t position = random.below(text.size() + 1);
        const std::size_t length = random.below(std::min<std::size_t>(8, text.size() - position) + 1);
        switch (random.below(7)) {
        case 0:
            text.erase(position, length);
            break;
        case 1:
            text.insert(position, random.oneOf(std::span(tokens)));
            break;
        case 2:
            text.replace(position, length, random.oneOf(std::span(tokens)));
            break;
        case 3:
            text.insert(random.below(text.size() + 1), text.substr(position, length));
            break;
        case 4: {
            const std::string& other = random.oneOf(std::span(seeds));
            text = text.substr(0, position) + other.substr(random.below(other.size()));
            break;
        }
        case 5:
            text.insert(position, 1, random.byte());
            break;
        default:
            text.resize(position);
        }
    }
    return text;
}

struct Verdict {
    bool comparable = true;
    json object; // null unless the line is a command
};

/// The verdict of another parser, whose rules differ in a few known places.
Verdict verdictOf(const std::string& text) {
    if (text.find('\0') != std::string::npos)
        return {}; // the other parser ends at a zero byte, which JSON does not allow
    if (text.starts_with("\xEF"))
        return {.comparable = false,
                .object = nullptr}; // the other parser treats a byte-order mark differently
    try {
        json parsed = json::parse(text);
        const bool isCommand = parsed.is_object() && parsed.contains("command") &&
                               parsed["command"].is_string() && parsed.contains("request_id") &&
                               (parsed["request_id"].is_number() || parsed["request_id"].is_boolean());
        return {.comparable = true, .object = isCommand ? std::move(parsed) : json()};
    } catch (const json::out_of_range&) {
        return {.comparable = false, .object = nullptr}; // a number beyond the range of a double
    } catch (const json::parse_error&) {
        return {};
    }
}

std::optional<std::string> stringIn(const json& object, const char* key) {
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? std::optional(found->get<std::string>())
                                                       : std::nullopt;
}

std::vector<std::string> pathsIn(const json& object) {
    const auto found = object.find("paths");
    if (found == object.end() || !found->is_array() ||
        !std::ranges::all_of(*found, [](const json& path) { return path.is_string(); }))
        return {};
    return found->get<std::vector<std::string>>();
}

void expectSameFields(const ClipboardCommand& command, const json& object, const std::string& text) {
    if (object["request_id"].is_number_unsigned()) {
        const std::uint64_t requestID = std::visit([](const auto& one) { return one.requestID; }, command);
        EXPECT_EQ(requestID, object["request_id"].get<std::uint64_t>()) << text;
    }
    if (const auto* const files = std::get_if<command::WriteFiles>(&command)) {
        EXPECT_EQ(object["command"], "write_files") << text;
        EXPECT_EQ(files->kind, stringIn(object, "kind")) << text;
        EXPECT_EQ(files->marker, stringIn(object, "marker")) << text;
        EXPECT_EQ(files->paths, pathsIn(object)) << text;
    } else if (const auto* const write = std::get_if<command::WriteText>(&command)) {
        EXPECT_EQ(object["command"], "write_text") << text;
        EXPECT_EQ(write->marker, stringIn(object, "marker")) << text;
        const auto base64 = stringIn(object, "text_b64");
        const auto payload = base64 ? decodeBase64(*base64) : std::nullopt;
        ASSERT_EQ(write->text.has_value(), payload.has_value()) << text;
        EXPECT_TRUE(!payload || write->text->view() == payload->view()) << text;
    }
}

TEST(CommandDecoder, agreesWithAnotherParserOnMutatedLines) {
    Random random(20240601);
    int accepted = 0;
    int compared = 0;
    constexpr int rounds = 30'000;
    for (int round = 0; round < rounds; ++round) {
        const std::string text = mutated(random);
        const Verdict verdict = verdictOf(text);
        if (!verdict.comparable)
            continue;
        ++compared;
        const auto command = decodeLine(text);
        ASSERT_EQ(command.has_value(), !verdict.object.is_null()) << text;
        if (command) {
            ++accepted;
            expectSameFields(*command, verdict.object, text);
        }
    }
    EXPECT_GT(compared, rounds * 9 / 10);
    EXPECT_GT(accepted, rounds / 20);
    EXPECT_LT(accepted, rounds - rounds / 20);
}

} // namespace
} // namespace tavel
