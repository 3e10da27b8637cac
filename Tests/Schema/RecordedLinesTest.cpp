#include "Tests/Support/RecordedLines.h"

#include "Tests/Store/EnvironmentVariable.h"
#include "Tests/Support/AgentProcess.h"
#include "Tests/Support/TestDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace tavel {

namespace {

/// The files go to the test's own directory: schema.lines would not understand these lines.
class RecordedLinesTest : public testing::Test {
protected:
    /// What the only file holds behind its first line.
    std::string recorded() const {
        const std::filesystem::path path = *std::filesystem::directory_iterator(lines_);
        std::ifstream file(path, std::ios::binary);
        const std::string content{std::istreambuf_iterator<char>(file), {}};
        return content.substr(content.find('\n') + 1);
    }

    TestDirectory directory_;

private:
    std::filesystem::path lines_ = directory_.path() / "lines";
    EnvironmentVariable variable_{"TAVEL_TEST_LINES_DIRECTORY", lines_};
};

} // namespace

TEST_F(RecordedLinesTest, holdWhatAnAgentAndItsParentSay) {
    {
        AgentProcess::Options options;
        options.environment = directory_.environment();
        AgentProcess agent(options);
        agent.send("{\"command\":\"ping\",");
        agent.send("\"request_id\":1}\n{");
        agent.nextLine();
        agent.send("\n{\"command\":\"quit\",\"request_id\":2}");
        agent.closeInput();
        agent.waitForExit(); // its last line stays unread
    }
    EXPECT_EQ(recorded(), "> {\"command\":\"ping\",\"request_id\":1}\n"
                          "< {\"request_id\":1,\"ok\":true,\"reason\":\"\",\"sequence\":0}\n"
                          "> {\n"
                          "> {\"command\":\"quit\",\"request_id\":2}\n"
                          "< {\"request_id\":2,\"ok\":true,\"reason\":\"\",\"sequence\":0}\n");
}

TEST_F(RecordedLinesTest, leaveOutTheMiddleOfLongBase64AndCountItsCharacters) {
    std::string payload(100'001, 'A');
    for (std::size_t i = 0; i < 10; ++i)
        payload.replace(1023 + i * 5000, 2, "\\/"); // the first lies across the cut
    {
        RecordedLines lines;
        lines.received("{\"a\":\"" + payload + "\",\"b\":\"" + std::string(9000, ' ') + "\"}");
    }
    // Of 99,991 characters, 1024 come before the cut; 97,940 are the largest multiple of four that leaves
    // 1024.
    EXPECT_EQ(recorded(), "< {\"a\":\"" + std::string(1023, 'A') + "\\/\x01" + "97940\x01" +
                              std::string(1027, 'A') + "\",\"b\":\"" + std::string(9000, ' ') + "\"}\n");
}

TEST_F(RecordedLinesTest, cutLinesThatStayLong) {
    {
        RecordedLines lines;
        lines.sent(std::string(5'000'000, ' ') + "\n");
    }
    EXPECT_EQ(recorded(), "> " + std::string(1024, ' ') + "\x02\n");
}

} // namespace tavel
