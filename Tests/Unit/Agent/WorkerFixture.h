#pragma once

#include "TavelClipboardAgent/main/ClipboardWorker.h"
#include "Tests/Unit/Doubles/TestPlatform.h"
#include "Tests/Unit/Fixtures/Pipe.h"
#include "Tests/Unit/Fixtures/TemporaryFile.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {

/// A worker on a platform in the test's hand; the parent's ends are a pipe and a file.
class WorkerFixture : public testing::Test {
protected:
    using Json = nlohmann::json;

    ScriptedPasteboard& pasteboard() { return *platform.pasteboard; }

    void makeWorker(std::int32_t parentPID = 0,
                    const std::optional<std::string>& pasteboardName = std::nullopt) {
        worker = std::make_shared<ClipboardWorker>(
            platform, ClipboardWorker::Pipes{commands.reader(), output.descriptor()}, parentPID,
            pasteboardName);
    }

    /// What the worker sends when it looks at the pasteboard now.
    std::vector<Json> polled() {
        worker->poll();
        return messages();
    }

    /// What the worker sends when the background job that is held runs now, and then what it posted.
    std::vector<Json> finished() {
        platform.loop.runBackgroundJobs();
        platform.loop.runPosted();
        return messages();
    }

    /// What the worker sent since the last time that it was asked for.
    std::vector<Json> messages() {
        const std::string text = output.contentFrom(seen_);
        seen_ += text.size();
        std::vector<Json> messages;
        for (std::size_t start = 0; start < text.size();) {
            const std::size_t end = text.find('\n', start);
            messages.push_back(Json::parse(text.substr(start, end - start)));
            start = end == std::string::npos ? text.size() : end + 1;
        }
        return messages;
    }

    /// The one reply to a command that the worker carries out now.
    Json replyTo(ClipboardCommand command) {
        worker->handle(std::move(command));
        const auto replies = messages();
        EXPECT_EQ(replies.size(), 1U);
        return replies.empty() ? Json() : replies.front();
    }

    static Json success(std::uint64_t requestID, std::int64_t sequence) {
        return {{"request_id", requestID}, {"ok", true}, {"reason", ""}, {"sequence", sequence}};
    }

    static Json failure(std::uint64_t requestID, std::string_view reason, std::int64_t sequence) {
        return {{"request_id", requestID}, {"ok", false}, {"reason", reason}, {"sequence", sequence}};
    }

    /// The event that announces a change before its content is looked at.
    static Json announcement(std::int64_t sequence, std::string_view marker = "") {
        return {{"event", "change"}, {"kind", "unsupported"}, {"marker", marker}, {"sequence", sequence}};
    }

    static Json pathsEvent(std::string_view kind, const std::vector<std::string>& paths,
                           std::int64_t sequence, std::string_view marker = "") {
        return {{"event", "change"},
                {"kind", kind},
                {"paths", paths},
                {"marker", marker},
                {"sequence", sequence}};
    }

    static Json textEvent(std::string_view base64, std::size_t bytes, std::int64_t sequence,
                          std::string_view marker = "") {
        return {{"event", "change"},
                {"text_b64", base64},
                {"bytes", bytes},
                {"marker", marker},
                {"sequence", sequence}};
    }

    static Representation representation(std::string_view type, std::string_view content) {
        return {std::string(type), Bytes::copyOf(content)};
    }

    static Json warning(std::string_view message) {
        return {{"event", "log"}, {"level", "warning"}, {"message", message}};
    }

    TestPlatform platform;
    Pipe commands; // the parent writes, the worker reads
    TemporaryFile output;
    std::shared_ptr<ClipboardWorker> worker;

private:
    std::size_t seen_ = 0;
};

} // namespace tavel
