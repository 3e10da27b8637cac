#include "TavelClipboardAgent/main/CommandReader.h"

#include "Support/Files.h"
#include "Support/ScopeExit.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/Unit/Agent/Decoding.h"
#include "Tests/Unit/Agent/WorkerFixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <future>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {
namespace {

class CommandReader : public WorkerFixture {
protected:
    CommandReader() { makeWorker(); }

    /// Reads these bytes to their end. The commands are posted, but not yet carried out.
    void read(std::string_view content) {
        const TemporaryFile input(content);
        readCommands(input.descriptor(), platform, worker);
    }

    std::vector<std::uint64_t> repliedRequests() {
        std::vector<std::uint64_t> requests;
        for (const Json& message : messages())
            requests.push_back(message.at("request_id").get<std::uint64_t>());
        return requests;
    }
};

using Requests = std::vector<std::uint64_t>;

TEST_F(CommandReader, handsCommandsOverInTheOrderOfTheirLines) {
    std::string lines;
    Requests expected;
    for (std::uint64_t request = 0; request < 100; ++request) {
        lines += R"({"command":"ping","request_id":)" + std::to_string(request) +
                 (request % 2 == 0 ? "}\n" : "}\r\n");
        expected.push_back(request);
    }
    read(lines);
    EXPECT_EQ(repliedRequests(), Requests());
    platform.loop.runPosted();
    EXPECT_EQ(repliedRequests(), expected);
}

TEST_F(CommandReader, dropsMalformedLinesWithoutATrace) {
    read("\n   \nnonsense\n[]\n7\n\"ping\"\n{}\n{\"command\":\"ping\"}\n{\"request_id\":1}\n"
         "{\"command\":\"ping\",\"request_id\":\"2\"}\n{\"command\":\"ping\",\"request_id\":3,\"x\":\"\xFF\"}"
         "\n"
         "{\"command\":\"ping\",\"request_id\":4}{\"command\":\"ping\",\"request_id\":5}\n"
         "{\"command\":\"ping\",\"request_id\":6}\n");
    platform.loop.runPosted();
    EXPECT_EQ(repliedRequests(), Requests{6});
}

TEST_F(CommandReader, handlesALastLineWithoutATerminator) {
    read(R"({"command":"ping","request_id":1})");
    platform.loop.runPosted();
    EXPECT_EQ(repliedRequests(), Requests{1});
}

TEST_F(CommandReader, answersTheSameRequestTwice) {
    const std::string line = commandLine("ping") + "\n";
    read(line + line);
    platform.loop.runPosted();
    EXPECT_EQ(repliedRequests(), (Requests{7, 7}));
}

TEST_F(CommandReader, carriesAPayloadLargerThanAnyBuffer) {
    const std::string text(1'000'000, 'x');
    std::string line = R"({"command":"write_text","request_id":7,"marker":"m","text_b64":")";
    for (std::size_t written = 0; written < text.size(); written += 3)
        line += "eHh4"; // xxx
    read(line + "\"}\n" + commandLine("ping") + "\n");
    platform.loop.runPosted();
    EXPECT_EQ(repliedRequests(), (Requests{7, 7}));
    EXPECT_EQ(pasteboard().content("public.utf8-plain-text").value_or("").size(), 1'000'002U);
}

TEST_F(CommandReader, stopsTheLoopsWaitAtTheEndOfInput) {
    read("");
    EXPECT_FALSE(platform.loop.wasToldToStopWaiting());
    platform.loop.runPosted();
    EXPECT_TRUE(platform.loop.wasToldToStopWaiting());
}

TEST_F(CommandReader, tellsThePlatformThatTheProcessEndsBehindTheEndOfInput) {
    read(commandLine("ping") + "\n");
    EXPECT_EQ(platform.expectedEnds, 1);
    EXPECT_EQ(repliedRequests(), Requests()) << "though the main thread has carried out nothing yet";
}

TEST_F(CommandReader, tellsThePlatformThatTheProcessEndsBehindQuit) {
    Pipe input;
    ASSERT_TRUE(writeAll(input.writer(), commandLine("quit") + "\n"));
    const auto reading =
        std::async(std::launch::async, [&] { readCommands(input.reader(), platform, worker); });
    const ScopeExit end([&input] { input.closeWriter(); });
    waitUntil([this] { return platform.expectedEnds == 1; }, std::chrono::seconds(30));
}

TEST_F(CommandReader, wakesTheLoopForALineThatItDrops) {
    read("nonsense\n");
    EXPECT_TRUE(platform.loop.wasToldToStopWaiting()) << "the line may have taken much memory";
}

TEST_F(CommandReader, doesNothingOnceTheWorkerIsGone) {
    read(commandLine("ping") + "\n" + commandLine("write_text", R"(,"text_b64":"aGk=","marker":"m")") + "\n");
    const std::weak_ptr<ClipboardWorker> gone = worker;
    worker.reset();
    ASSERT_TRUE(gone.expired());
    platform.loop.runPosted();
    EXPECT_EQ(messages(), std::vector<Json>());
    EXPECT_EQ(pasteboard().calls(), std::vector<std::string>());
    EXPECT_TRUE(platform.loop.wasToldToStopWaiting()); // the loop is woken nevertheless
}

} // namespace
} // namespace tavel
