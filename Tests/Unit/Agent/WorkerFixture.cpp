#include "Tests/Unit/Agent/WorkerFixture.h"

#include "Tests/Support/WaitUntil.h"

#include <chrono>
#include <utility>

namespace tavel {

void WorkerFixture::makeWorker(std::int32_t parentPID, const std::optional<std::string>& pasteboardName) {
    worker = std::make_shared<ClipboardWorker>(
        platform, ClipboardWorker::Pipes{commands.reader(), output.descriptor()}, parentPID, pasteboardName);
}

std::vector<nlohmann::json> WorkerFixture::polled() {
    flush(); // as long as output waits, the worker does not report
    worker->poll();
    return messages();
}

void WorkerFixture::flush() const {
    if (worker != nullptr)
        waitUntil([this] { return worker->hasWrittenOutput(); }, std::chrono::seconds(30));
}

std::vector<nlohmann::json> WorkerFixture::finished() {
    platform.loop.runBackgroundJobs();
    platform.loop.runPosted();
    return messages();
}

std::vector<nlohmann::json> WorkerFixture::messages() {
    flush();
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

nlohmann::json WorkerFixture::replyTo(ClipboardCommand command) {
    worker->handle(std::move(command));
    const auto replies = messages();
    EXPECT_EQ(replies.size(), 1U);
    return replies.empty() ? Json() : replies.front();
}

nlohmann::json WorkerFixture::success(std::uint64_t requestID, std::int64_t sequence) {
    return {{"request_id", requestID}, {"ok", true}, {"reason", ""}, {"sequence", sequence}};
}

nlohmann::json WorkerFixture::failure(std::uint64_t requestID, std::string_view reason,
                                      std::int64_t sequence) {
    return {{"request_id", requestID}, {"ok", false}, {"reason", reason}, {"sequence", sequence}};
}

nlohmann::json WorkerFixture::announcement(std::int64_t sequence, std::string_view marker) {
    return {{"event", "change"}, {"kind", "unsupported"}, {"marker", marker}, {"sequence", sequence}};
}

nlohmann::json WorkerFixture::textEvent(std::string_view base64, std::size_t bytes, std::int64_t sequence,
                                        std::string_view marker) {
    return {{"event", "change"},
            {"text_b64", base64},
            {"bytes", bytes},
            {"marker", marker},
            {"sequence", sequence}};
}

nlohmann::json WorkerFixture::pathsEvent(std::string_view kind, const std::vector<std::string>& paths,
                                         std::int64_t sequence, std::string_view marker) {
    return {
        {"event", "change"}, {"kind", kind}, {"paths", paths}, {"marker", marker}, {"sequence", sequence}};
}

nlohmann::json WorkerFixture::warning(std::string_view message) {
    return {{"event", "log"}, {"level", "warning"}, {"message", message}};
}

Representation WorkerFixture::representation(std::string_view type, std::string_view content) {
    return {std::string(type), Bytes::copyOf(content)};
}

} // namespace tavel
