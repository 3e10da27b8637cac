#include "Console/AgentMessage.h"

#include "Support/Base64.h"

#include <simdjson.h>

#include <optional>
#include <utility>

namespace tavel {

namespace {

using simdjson::dom::object;

/// Nothing when the key is missing or its value has another type.
template <typename Value>
std::optional<Value> field(const object& fields, std::string_view key) {
    Value value{};
    if (fields.at_key(key).get(value) != simdjson::SUCCESS)
        return std::nullopt;
    return value;
}

std::optional<std::string> text(const object& fields, std::string_view key) {
    const auto value = field<std::string_view>(fields, key);
    return value ? std::optional<std::string>(*value) : std::nullopt;
}

std::optional<std::vector<std::string>> paths(const object& fields) {
    const auto array = field<simdjson::dom::array>(fields, "paths");
    if (!array)
        return std::nullopt;
    std::vector<std::string> paths;
    for (const auto element : *array) {
        std::string_view path;
        if (element.get(path) != simdjson::SUCCESS)
            return std::nullopt;
        paths.emplace_back(path);
    }
    return paths;
}

std::optional<AgentMessage> decodeReply(const object& fields) {
    const auto requestID = field<std::uint64_t>(fields, "request_id");
    const auto ok = field<bool>(fields, "ok");
    auto reason = text(fields, "reason");
    const auto sequence = field<std::uint64_t>(fields, "sequence");
    if (!requestID || !ok || !reason || !sequence)
        return std::nullopt;
    return message::Reply{*requestID, *ok, std::move(*reason), *sequence};
}

std::optional<AgentMessage> decodeTextChange(std::string_view encoded, std::string marker,
                                             std::uint64_t sequence) {
    const auto decoded = decodeBase64(encoded);
    if (!decoded)
        return std::nullopt;
    return message::TextChange{std::string(decoded->view()), std::move(marker), sequence};
}

std::optional<AgentMessage> decodeChange(const object& fields) {
    auto marker = text(fields, "marker");
    const auto sequence = field<std::uint64_t>(fields, "sequence");
    if (!marker || !sequence)
        return std::nullopt;
    // The text change is the one without a kind.
    if (const auto encoded = field<std::string_view>(fields, "text_b64"))
        return decodeTextChange(*encoded, std::move(*marker), *sequence);
    auto kind = text(fields, "kind");
    if (kind == "unsupported")
        return message::Announcement{std::move(*marker), *sequence};
    auto list = paths(fields);
    if (!kind || !list)
        return std::nullopt;
    return message::PathsChange{std::move(*kind), std::move(*list), std::move(*marker), *sequence};
}

std::optional<AgentMessage> decodeEvent(std::string_view event, const object& fields) {
    if (event == "change")
        return decodeChange(fields);
    if (event == "log") {
        auto level = text(fields, "level");
        auto content = text(fields, "message");
        if (level && content)
            return message::Log{std::move(*level), std::move(*content)};
    }
    if (event == "file_renamed") {
        if (const auto sequence = field<std::uint64_t>(fields, "sequence"))
            return message::FileRenamed{*sequence};
    }
    return std::nullopt;
}

} // namespace

AgentMessage decodeAgentMessage(std::string_view line) {
    simdjson::dom::parser parser;
    object fields;
    std::optional<AgentMessage> decoded;
    if (parser.parse(line.data(), line.size()).get(fields) == simdjson::SUCCESS) {
        const auto event = field<std::string_view>(fields, "event");
        decoded = event ? decodeEvent(*event, fields) : decodeReply(fields);
    }
    return decoded ? std::move(*decoded) : message::Unintelligible{std::string(line)};
}

} // namespace tavel
