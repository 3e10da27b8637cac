#pragma once

#include "tavel/client/Messages.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

/// The protocol's JSON. Applications need nothing of this file.
namespace tavel::client::detail {

struct Reply {
    std::uint64_t requestId = 0;
    bool ok = false;
    std::string reason;
    std::uint64_t sequence = 0;
};

inline constexpr std::string_view base64Alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

inline std::string encodeBase64(std::string_view data) {
    std::string encoded;
    encoded.reserve((data.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < data.size(); i += 3) {
        const std::string_view group = data.substr(i, 3);
        std::uint32_t bits = 0;
        for (std::size_t k = 0; k < 3; ++k)
            bits = bits << 8 | (k < group.size() ? static_cast<unsigned char>(group[k]) : 0U);
        for (std::size_t k = 0; k <= group.size(); ++k)
            encoded += base64Alphabet[bits >> (18 - 6 * k) & 63];
        encoded.append(3 - group.size(), '=');
    }
    return encoded;
}

/// Nothing if it is not base64 as the agent writes it: without "=".
inline std::optional<std::string> decodeBase64(std::string_view encoded) {
    static const auto values = [] {
        std::array<std::uint8_t, 256> table{};
        table.fill(64);
        for (std::size_t i = 0; i < base64Alphabet.size(); ++i)
            table[static_cast<unsigned char>(base64Alphabet[i])] = static_cast<std::uint8_t>(i);
        return table;
    }();
    if (encoded.size() % 4 == 1)
        return std::nullopt;
    std::string data;
    data.reserve(encoded.size() / 4 * 3 + 2);
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (const char character : encoded) {
        const std::uint32_t value = values[static_cast<unsigned char>(character)];
        if (value == 64)
            return std::nullopt;
        bits = bits << 6 | value;
        count += 6;
        if (count >= 8) {
            count -= 8;
            data += static_cast<char>(bits >> count & 0xFF);
        }
    }
    return data;
}

/// Builds the fields of a command.
class CommandEncoder {
public:
    using Json = nlohmann::json;

    Json operator()(const command::Ping&) const { return {{"command", "ping"}}; }
    Json operator()(const command::WriteText& text) const {
        return {{"command", "write_text"}, {"text_b64", encodeBase64(text.text)}, {"marker", text.marker}};
    }
    Json operator()(const command::WriteFiles& files) const {
        return paths("files", files.paths, files.marker, files.expectedSequence);
    }
    Json operator()(const command::WriteImage& image) const {
        return paths("image", {image.path}, image.marker, image.expectedSequence);
    }
    Json operator()(const command::WriteFormats& formats) const {
        return paths("formats", formats.paths, formats.marker, formats.expectedSequence);
    }
    Json operator()(const command::WriteImageData& image) const {
        return {{"command", "write_image_data"}, {"image_b64", encodeBase64(image.data)}};
    }
    Json operator()(const command::DiscardPending&) const { return {{"command", "discard_pending"}}; }
    Json operator()(const command::ConfigureFilePrompt& prompt) const {
        return {{"command", "configure_file_prompt"}, {"rename_prompt", prompt.renamePrompt}};
    }
    Json operator()(const command::Quit&) const { return {{"command", "quit"}}; }
    Json operator()(const command::Other& other) const {
        if (!other.fields.is_object())
            throw std::invalid_argument("the fields of a command are no object");
        Json fields = other.fields;
        fields["command"] = other.name;
        return fields;
    }

private:
    static Json paths(const char* kind, const std::vector<std::filesystem::path>& paths,
                      const std::string& marker, std::optional<std::uint64_t> expectedSequence) {
        Json names = Json::array();
        for (const std::filesystem::path& path : paths)
            names.push_back(std::filesystem::absolute(path).string());
        Json fields{
            {"command", "write_files"}, {"kind", kind}, {"paths", std::move(names)}, {"marker", marker}};
        if (expectedSequence)
            fields["expected_sequence"] = *expectedSequence;
        return fields;
    }
};

/// The command's line, without a line feed. Throws std::invalid_argument if a text or path is not UTF-8.
inline std::string encodeCommand(const Command& command, std::uint64_t requestId) {
    nlohmann::json fields = std::visit(CommandEncoder(), command);
    fields["request_id"] = requestId;
    try {
        return fields.dump();
    } catch (const nlohmann::json::type_error& error) {
        throw std::invalid_argument(error.what());
    }
}

/// Reads one line of the agent. Every function returns nothing if the line is none of an agent.
class MessageDecoder {
public:
    using Json = nlohmann::json;
    using Message = std::variant<Reply, Event>;

    static std::optional<Message> decode(std::string_view line) {
        Json fields = Json::parse(line, nullptr, false);
        if (!fields.is_object())
            return std::nullopt;
        if (!fields.contains("event"))
            return reply(fields);
        auto event = decodeEvent(fields);
        return event ? std::optional<Message>(std::move(*event)) : std::nullopt;
    }

private:
    template <typename Value>
    static Value* find(Json& fields, const char* key) {
        const auto found = fields.find(key);
        return found == fields.end() ? nullptr : found->template get_ptr<Value*>();
    }
    static std::string* string(Json& fields, const char* key) { return find<std::string>(fields, key); }
    static std::uint64_t* number(Json& fields, const char* key) { return find<std::uint64_t>(fields, key); }

    static std::optional<Message> reply(Json& fields) {
        const auto* const requestId = number(fields, "request_id");
        const auto* const ok = find<bool>(fields, "ok");
        auto* const reason = string(fields, "reason");
        const auto* const sequence = number(fields, "sequence");
        if (requestId == nullptr || ok == nullptr || reason == nullptr || sequence == nullptr)
            return std::nullopt;
        return Reply{*requestId, *ok, std::move(*reason), *sequence};
    }

    static std::optional<Event> decodeEvent(Json& fields) {
        const auto* const event = string(fields, "event");
        if (event == nullptr)
            return std::nullopt;
        if (*event == "change")
            return change(fields);
        if (*event == "log") {
            auto* const level = string(fields, "level");
            auto* const message = string(fields, "message");
            if (level == nullptr || message == nullptr)
                return std::nullopt;
            return LogMessage{std::move(*level), std::move(*message)};
        }
        if (*event == "file_renamed") {
            const auto* const sequence = number(fields, "sequence");
            return sequence == nullptr ? std::nullopt : std::optional<Event>(FileRenamed{*sequence});
        }
        return UnknownEvent{std::move(fields)};
    }

    static std::optional<Event> change(Json& fields) {
        auto* const marker = string(fields, "marker");
        const auto* const sequence = number(fields, "sequence");
        if (marker == nullptr || sequence == nullptr)
            return std::nullopt;
        if (!fields.contains("kind"))
            return text(fields, *marker, *sequence);
        const auto* const kind = string(fields, "kind");
        if (kind == nullptr)
            return std::nullopt;
        if (*kind == "unsupported")
            return Change{std::move(*marker), *sequence};
        if (*kind != "files" && *kind != "image" && *kind != "formats")
            return UnknownEvent{std::move(fields)};
        auto paths = decodePaths(fields);
        if (!paths)
            return std::nullopt;
        if (*kind == "files")
            return FilesChange{std::move(*paths), std::move(*marker), *sequence};
        if (*kind == "formats")
            return FormatsChange{std::move(*paths), std::move(*marker), *sequence};
        if (paths->size() != 1)
            return std::nullopt;
        return ImageChange{std::move(paths->front()), std::move(*marker), *sequence};
    }

    static std::optional<Event> text(Json& fields, std::string& marker, std::uint64_t sequence) {
        const auto* const encoded = string(fields, "text_b64");
        auto decoded = encoded == nullptr ? std::nullopt : decodeBase64(*encoded);
        if (!decoded)
            return std::nullopt;
        return TextChange{std::move(*decoded), std::move(marker), sequence};
    }

    static std::optional<std::vector<std::filesystem::path>> decodePaths(Json& fields) {
        auto* const array = find<Json::array_t>(fields, "paths");
        if (array == nullptr)
            return std::nullopt;
        std::vector<std::filesystem::path> paths;
        for (Json& path : *array) {
            if (!path.is_string())
                return std::nullopt;
            paths.emplace_back(std::move(path.get_ref<std::string&>()));
        }
        return paths;
    }
};

} // namespace tavel::client::detail
