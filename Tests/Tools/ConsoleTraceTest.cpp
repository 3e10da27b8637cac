#include "Tests/Tools/ConsoleTest.h"
#include "Tests/Unit/Fixtures/PrintJson.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace tavel {

namespace {

using Json = nlohmann::json;
using testing::HasSubstr;

constexpr const char* recordBegin = R"({"trace":1,"begun":"2026-11-23T01:30:48Z"})"
                                    "\n";

/// A line of a record.
std::string recorded(std::int64_t microseconds, const std::string& speaker, const std::string& line) {
    return Json{{"microseconds", microseconds}, {"from", speaker}, {"line", line}}.dump() + "\n";
}

class ConsoleTraceTest : public ConsoleTest {
protected:
    std::vector<Json> record() const {
        std::ifstream file(world_.directory() / "record");
        std::vector<Json> lines;
        for (std::string line; std::getline(file, line);)
            lines.push_back(Json::parse(line));
        return lines;
    }

    ToolResult replay(std::string_view lines) const {
        world_.write("record", recordBegin + std::string(lines));
        return session("", {"--replay", "record", "--timeout", "1"});
    }
};

TEST_F(ConsoleTraceTest, RecordsBothSidesInTheirOrder) {
    output("ping\ntext é\n", {"--trace", "record"});
    const std::vector<Json> lines = record();
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_EQ(lines[0].at("trace"), 1);
    std::int64_t last = 0;
    std::string speakers;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        EXPECT_GE(lines[i].at("microseconds"), last);
        last = lines[i].at("microseconds").get<std::int64_t>();
        speakers += lines[i].at("from").get<std::string>() + " ";
    }
    EXPECT_EQ(speakers, "parent agent parent agent agent ");
    EXPECT_EQ(Json::parse(lines[3].at("line").get<std::string>()).at("command"), "write_text");
    EXPECT_EQ(Json::parse(lines[4].at("line").get<std::string>()).at("request_id"), 2);
    EXPECT_EQ(lines[5].at("end"), "exit status 0");
}

TEST_F(ConsoleTraceTest, RecordsForItsUserAlone) {
    output("", {"--trace", "record"});
    EXPECT_EQ(std::filesystem::status(world_.directory() / "record").permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(ConsoleTraceTest, RecordsBytesThatAreNoText) {
    const std::string line = R"({"command":"ping","request_id":1,"marker":")"
                             "\xFF\"}";
    session(line + "\n", {"--trace", "record", "--raw", "--timeout", "1"});
    EXPECT_EQ(record().at(1).at("line_b64"),
              "eyJjb21tYW5kIjoicGluZyIsInJlcXVlc3RfaWQiOjEsIm1hcmtlciI6Iv8ifQ");
}

TEST_F(ConsoleTraceTest, NeverTouchesAFileThatExists) {
    world_.write("record", "precious");
    const ToolResult result = session("ping\n", {"--trace", "record"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-console: Cannot create record: File exists\n");
    EXPECT_EQ(result.output, "");
}

TEST_F(ConsoleTraceTest, SaysThatTheRecordCannotBeWritten) {
    const std::string agent = world_.writeScript("agent", "while read line; do :; done\n");
    const std::string script =
        world_.writeScript("full", "trap '' XFSZ\nulimit -f 0\nexec '" + std::string(TAVEL_CONSOLE) +
                                       "' --trace record --agent " + agent + "\n");
    const ToolResult result = runTool(world_, {script}, "ping\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-console: the record cannot be written\n");
}

TEST_F(ConsoleTraceTest, PlaysTheParentsHalfAgain) {
    output("text Bonjour\nfiles gone\nquit\n", {"--trace", "record"});
    pasteboard({"clear"});
    EXPECT_THAT(output("", {"--replay", "record", "--speed", "1000"}),
                testing::EndsWith("Replies as recorded: 3, different: 0, missing: 0.\n"));
    EXPECT_EQ(pasteboard({"paste"}), "Bonjour");
}

TEST_F(ConsoleTraceTest, TellsOfAReplyThatIsNotAsRecorded) {
    const ToolResult result =
        replay(recorded(0, "parent", R"({"command":"ping","request_id":7})") +
               recorded(9, "agent", R"({"request_id":7,"ok":false,"reason":"Non","sequence":3})"));
    EXPECT_EQ(result.output, "[7] ping: done (#0)\n"
                             "The record has: [7] ping: failed: Non (#3)\n"
                             "Replies as recorded: 0, different: 1, missing: 0.\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-console: the replies are not as recorded\n");
}

TEST_F(ConsoleTraceTest, TellsOfAReplyThatTheRecordLacks) {
    const ToolResult result =
        replay(recorded(0, "parent", R"({"command":"ping","request_id":7})") +
               recorded(200'000, "parent", R"({"command":"quit","request_id":8})") +
               recorded(200'001, "agent", R"({"request_id":8,"ok":true,"reason":"","sequence":0})"));
    EXPECT_THAT(result.output, HasSubstr("[7] ping: done (#0)\nThe record has no such reply.\n"));
    EXPECT_EQ(result.status, 1);
}

TEST_F(ConsoleTraceTest, GivesUpWithoutARecordedReply) {
    const ToolResult result =
        replay(recorded(0, "agent", R"({"request_id":7,"ok":true,"reason":"","sequence":3})") +
               recorded(9, "parent", R"({"command":"ping","request_id":8})"));
    EXPECT_EQ(result.output, "Replies as recorded: 0, different: 0, missing: 1.\n");
    EXPECT_EQ(result.errors, "tavel-console: the agent does not answer\n");
}

TEST_F(ConsoleTraceTest, KeepsTheRecordedTimes) {
    const auto start = std::chrono::steady_clock::now();
    const std::string lines = recorded(0, "parent", R"({"command":"ping","request_id":7})") +
                              recorded(9, "agent", R"({"request_id":7,"ok":true,"reason":"","sequence":3})") +
                              R"({"microseconds":300000,"from":"agent","end":"exit status 0"})" + "\n";
    EXPECT_EQ(replay(lines).status, 0);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300));
}

TEST_F(ConsoleTraceTest, PassesOverALastLineThatIsCut) {
    const ToolResult result =
        replay(recorded(0, "parent", R"({"command":"ping","request_id":7})") +
               recorded(9, "agent", R"({"request_id":7,"ok":true,"reason":"","sequence":3})") +
               R"({"microseconds":10,"from":"par)");
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.status, 0);
}

TEST_F(ConsoleTraceTest, PlaysNothingButRecords) {
    EXPECT_EQ(session("", {"--replay", "nowhere"}).errors,
              "tavel-console: nowhere: No such file or directory\n");
    world_.write("other", "{\"command\":\"ping\"}\n");
    EXPECT_EQ(session("", {"--replay", "other"}).errors,
              "tavel-console: other: this is no record of a session, or one of another version\n");
    world_.write("empty", "");
    EXPECT_EQ(session("", {"--replay", "empty"}).errors,
              "tavel-console: empty: this is no record of a session\n");
    EXPECT_EQ(replay("nonsense\n").errors, "tavel-console: record: line 2 is no JSON object\n");
    const ToolResult result = replay(R"({"microseconds":1,"from":"nobody","line":"{}"})"
                                     "\n");
    EXPECT_EQ(result.errors, "tavel-console: record: line 2 is no line of a session\n");
    EXPECT_EQ(result.status, 1);
}

} // namespace

} // namespace tavel
