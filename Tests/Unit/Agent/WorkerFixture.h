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

/// A worker on a platform in the test's hand; the parent's ends are a pipe and a file.
class WorkerFixture : public testing::Test {
protected:
    using Json = nlohmann::json;

    ScriptedPasteboard& pasteboard() { return *platform.pasteboard; }

    void makeWorker(std::int32_t parentPID = 0,
                    const std::optional<std::string>& pasteboardName = std::nullopt);

    /// What the worker sends when it looks at the pasteboard now.
    std::vector<Json> polled();

    /// What the worker sends when the background job that is held runs now, and then what it posted.
    std::vector<Json> finished();

    /// What the worker sent since the last time that it was asked for.
    std::vector<Json> messages();

    /// The one reply to a command that the worker carries out now.
    Json replyTo(ClipboardCommand command);

    static Json success(std::uint64_t requestID, std::int64_t sequence);
    static Json failure(std::uint64_t requestID, std::string_view reason, std::int64_t sequence);

    /// The event that announces a change before its content is looked at.
    static Json announcement(std::int64_t sequence, std::string_view marker = "");

    static Json textEvent(std::string_view base64, std::size_t bytes, std::int64_t sequence,
                          std::string_view marker = "");

    /// The event of a content that is described by paths.
    static Json pathsEvent(std::string_view kind, const std::vector<std::string>& paths,
                           std::int64_t sequence, std::string_view marker = "");

    static Json warning(std::string_view message);

    static Representation representation(std::string_view type, std::string_view content);

    /// Whether the text has the canonical form of a UUID, in upper case.
    static bool isUuid(std::string_view text);

    TestPlatform platform;
    Pipe commands; // the parent writes, the worker reads
    TemporaryFile output;
    std::shared_ptr<ClipboardWorker> worker;

private:
    std::size_t seen_ = 0;
};

} // namespace tavel
