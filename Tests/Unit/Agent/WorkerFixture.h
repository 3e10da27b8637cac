#pragma once

#include "TavelClipboardAgent/main/ClipboardWorker.h"
#include "Tests/Unit/Doubles/TestPlatform.h"
#include "Tests/Unit/Fixtures/Pipe.h"
#include "Tests/Unit/Fixtures/PrintJson.h"
#include "Tests/Unit/Fixtures/TemporaryFile.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// A worker on a platform that the test controls. Its input is a pipe, its output a file.
class WorkerFixture : public testing::Test {
protected:
    using Json = nlohmann::json;

    ScriptedPasteboard& pasteboard() { return *platform.pasteboard; }

    void makeWorker(std::int32_t parentPID = 0,
                    const std::optional<std::string>& pasteboardName = std::nullopt);

    /// Polls; returns the messages.
    std::vector<Json> polled();

    /// Runs the held background jobs and what they post; returns the messages.
    std::vector<Json> finished();

    /// Waits until the worker's output is written.
    void flush() const;

    /// The messages since the last call.
    std::vector<Json> messages();

    /// Carries out the command; returns its one reply.
    Json replyTo(ClipboardCommand command);

    static Json success(std::uint64_t requestID, std::int64_t sequence);
    static Json failure(std::uint64_t requestID, std::string_view reason, std::int64_t sequence);

    /// The event that announces a change.
    static Json announcement(std::int64_t sequence, std::string_view marker = "");

    static Json textEvent(std::string_view base64, std::size_t bytes, std::int64_t sequence,
                          std::string_view marker = "");

    /// The event that describes a content by paths.
    static Json pathsEvent(std::string_view kind, const std::vector<std::string>& paths,
                           std::int64_t sequence, std::string_view marker = "");

    static Json warning(std::string_view message);

    static Representation representation(std::string_view type, std::string_view content);

    TestPlatform platform;
    Pipe commands; // the parent writes, the worker reads
    TemporaryFile output;
    std::shared_ptr<ClipboardWorker> worker;

private:
    std::size_t seen_ = 0;
};

} // namespace tavel
