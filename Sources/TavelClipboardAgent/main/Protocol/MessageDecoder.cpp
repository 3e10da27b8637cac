#include "TavelClipboardAgent/main/Protocol/MessageDecoder.h"

#include "Support/Base64.h"
#include "TavelClipboardAgent/main/Protocol/Names.h"

#include <simdjson.h>

#include <utility>

namespace tavel {

namespace {

using simdjson::dom::object;

/// nullopt if the key is missing or its value has another type.
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
    const auto array = field<simdjson::dom::array>(fields, jsonKey::paths);
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
    const auto requestID = field<std::uint64_t>(fields, jsonKey::requestID);
    const auto ok = field<bool>(fields, jsonKey::ok);
    auto reason = text(fields, jsonKey::reason);
    const auto sequence = field<std::uint64_t>(fields, jsonKey::sequence);
    if (!requestID || !ok || !reason || !sequence)
        return std::nullopt;
    return Reply{*requestID, *ok, std::move(*reason), *sequence};
}

std::optional<AgentMessage> decodeTextChange(std::string_view encoded, std::string marker,
                                             std::uint64_t sequence) {
    auto decoded = decodeBase64(encoded);
    if (!decoded)
        return std::nullopt;
    return event::TextChange{std::move(*decoded), std::move(marker), sequence};
}

std::optional<AgentMessage> decodeChange(const object& fields) {
    auto marker = text(fields, jsonKey::marker);
    const auto sequence = field<std::uint64_t>(fields, jsonKey::sequence);
    if (!marker || !sequence)
        return std::nullopt;
    // The text change is the one without a kind.
    if (const auto encoded = field<std::string_view>(fields, jsonKey::textBase64))
        return decodeTextChange(*encoded, std::move(*marker), *sequence);
    auto kind = text(fields, jsonKey::kind);
    if (kind == announcementKind)
        return event::Announcement{std::move(*marker), *sequence};
    auto list = paths(fields);
    if (!kind || !list)
        return std::nullopt;
    return event::PathsChange{std::move(*kind), std::move(*list), std::move(*marker), *sequence};
}

std::optional<AgentMessage> decodeEvent(std::string_view name, const object& fields) {
    if (name == eventName::change)
        return decodeChange(fields);
    if (name == eventName::log) {
        auto level = text(fields, jsonKey::level);
        auto content = text(fields, jsonKey::message);
        if (level && content)
            return event::Log{std::move(*level), std::move(*content)};
    }
    if (name == eventName::fileRenamed) {
        if (const auto sequence = field<std::uint64_t>(fields, jsonKey::sequence))
            return event::FileRenamed{*sequence};
    }
    return std::nullopt;
}

} // namespace

std::optional<AgentMessage> decodeMessage(std::string_view line) {
    simdjson::dom::parser parser;
    object fields;
    if (parser.parse(line.data(), line.size()).get(fields) != simdjson::SUCCESS)
        return std::nullopt;
    const auto event = field<std::string_view>(fields, jsonKey::event);
    return event ? decodeEvent(*event, fields) : decodeReply(fields);
}

std::optional<CommandHead> decodeCommandHead(std::string_view line) {
    simdjson::dom::parser parser;
    object fields;
    if (parser.parse(line.data(), line.size()).get(fields) != simdjson::SUCCESS)
        return std::nullopt;
    auto name = text(fields, jsonKey::command);
    const auto requestID = field<std::uint64_t>(fields, jsonKey::requestID);
    if (!name || !requestID)
        return std::nullopt;
    return CommandHead{*requestID, std::move(*name)};
}

} // namespace tavel
