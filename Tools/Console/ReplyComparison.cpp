#include "Console/ReplyComparison.h"

#include "Console/Paragraph.h"
#include "TavelClipboardAgent/main/Protocol/MessageDecoder.h"

#include <utility>
#include <variant>

namespace tavel {

ReplyComparison::ReplyComparison(const std::vector<TracedLine>& record) {
    for (const TracedLine& line : record) {
        if (line.speaker != Speaker::agent)
            continue;
        const auto message = decodeMessage(line.text);
        if (const auto* const reply = message ? std::get_if<Reply>(&*message) : nullptr)
            expected_[reply->requestID].push_back(*reply);
    }
}

std::optional<std::string> ReplyComparison::compare(const Reply& reply, std::string_view requestName) {
    ++replies_;
    std::deque<Reply>& expected = expected_[reply.requestID];
    if (expected.empty()) {
        ++differences_;
        return "The record has no such reply.";
    }
    const Reply recorded = std::move(expected.front());
    expected.pop_front();
    if (recorded.ok == reply.ok && recorded.reason == reply.reason)
        return std::nullopt;
    ++differences_;
    return "The record has: " + describeMessage(recorded, requestName).text;
}

std::size_t ReplyComparison::missing() const {
    std::size_t count = 0;
    for (const auto& [requestID, replies] : expected_)
        count += replies.size();
    return count;
}

std::string ReplyComparison::summary() const {
    return "Replies as recorded: " + std::to_string(replies_ - differences_) +
           ", different: " + std::to_string(differences_) + ", missing: " + std::to_string(missing()) + ".";
}

} // namespace tavel
