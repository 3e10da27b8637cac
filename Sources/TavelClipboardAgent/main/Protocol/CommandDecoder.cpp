#include "TavelClipboardAgent/main/Protocol/CommandDecoder.h"

#include "Support/Base64.h"
#include "Support/JsonNumber.h"
#include "Support/JsonString.h"
#include "TavelClipboardAgent/main/Protocol/Names.h"

#include <simdjson.h>

#include <cstring>
#include <new>
#include <span>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace tavel {

namespace {

namespace ondemand = simdjson::ondemand;

static_assert(LineReader::padding >= simdjson::SIMDJSON_PADDING);
static_assert(LineReader::longestLineBytes <= simdjson::SIMDJSON_MAXSIZE_BYTES);

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// Real messages nest far less.
constexpr std::size_t maximumDepth = 512;

/// The parser's tables grow with the longest line. They are freed after a line above this size.
constexpr std::size_t keptParserBytes = std::size_t{1} << 20;

/// The values of the keys that commands use; nullopt if absent or of another type, and if there is no memory
/// for the value: every command needs those that take memory, so it is then refused with a reason of its own.
/// The views are in the line.
struct Fields {
    std::optional<std::string_view> command;
    std::optional<std::uint64_t> requestID;
    std::optional<bool> renamePrompt;
    std::optional<std::string_view> textBase64;
    std::optional<std::string_view> imageBase64;
    std::optional<std::string> marker;
    std::optional<std::string> kind;
    std::optional<std::vector<std::string>> paths;
    std::optional<std::uint64_t> expectedSequence;
};

/// Whether the string, a view in the line, is the one that was taken out of the line.
bool isPayload(const LineReader::Line& line, std::string_view text) {
    return line.payload && text.data() == line.text.data() + line.payload->offset;
}

/// nullopt if the string is no base64, or if there is no memory for the bytes.
std::optional<Bytes> bytesOf(const LineReader::Line& line, std::optional<std::string_view> base64) {
    if (!base64)
        return std::nullopt;
    if (isPayload(line, *base64))
        return line.payload->content.bytes;
    try {
        return decodeBase64(*base64);
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

std::string_view withoutTrailingWhitespace(std::string_view token) {
    const std::size_t last = token.find_last_not_of(" \t\r\n"); // RFC 8259, section 2
    return token.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

/// An object or array that is being walked.
struct OpenContainer {
    using Members = simdjson::simdjson_result<ondemand::object_iterator>;
    using Elements = simdjson::simdjson_result<ondemand::array_iterator>;

    bool isAtEnd() const {
        return std::visit([]<typename Position>(const Position& at) { return at == Position(); }, position);
    }
    void advance() {
        std::visit([](auto& at) { ++at; }, position);
    }

    std::variant<Members, Elements> position;
    bool isPaths = false; // the array of a command's "paths"
};

/// Walks one line's JSON and checks all of it, unused members included. simdjson's on-demand interface checks
/// only what is read, and its document interface refuses integers beyond 64 bits.
///
/// A payload that was taken out of the line reads as an empty string. As a key or as a command's name that
/// is unknown, like the whole string: no name is as long as a payload, or empty.
///
/// Not by recursion: 512 levels of it do not fit on the stack of every background thread.
class LineWalker {
public:
    /// `open` is empty, has room for the deepest nesting, and belongs to the walker meanwhile.
    LineWalker(const LineReader::Line& line, std::vector<OpenContainer>& open) : line_(line), open_(open) {}

    std::optional<Fields> walk(ondemand::document& document) {
        ondemand::object object;
        if (document.get_object().get(object) != simdjson::SUCCESS)
            return std::nullopt;
        open_.push_back({object.begin()});
        while (!open_.empty()) {
            const std::size_t depth = open_.size();
            if (open_.back().isAtEnd())
                open_.pop_back();
            else if (!walkNext(open_.back()))
                return std::nullopt;
            if (!open_.empty() && open_.size() <= depth) // a value or a whole container has been walked
                open_.back().advance();
        }
        if (document.current_location().error() != simdjson::OUT_OF_BOUNDS)
            return std::nullopt; // more text follows the object
        return std::move(fields_);
    }

private:
    /// A scalar as written. For a string, its content with the escapes replaced.
    struct Scalar {
        ondemand::json_type type;
        std::string_view text;
    };

    /// Checks the value at the container's position. If that is a container, it is opened.
    bool walkNext(OpenContainer& container) {
        if (auto* const elements = std::get_if<OpenContainer::Elements>(&container.position)) {
            auto element = **elements;
            return element.error() == simdjson::SUCCESS &&
                   walkValue(element.value_unsafe(), container.isPaths);
        }
        auto member = *std::get<OpenContainer::Members>(container.position);
        if (member.error() != simdjson::SUCCESS)
            return false;
        ondemand::field field = member.value_unsafe();
        const auto key = unescapedKey(field.key().raw());
        const ondemand::value value = field.value();
        return key && (open_.size() == 1 ? walkField(*key, value) : walkValue(value, false));
    }

    /// A member of the command object.
    bool walkField(std::string_view key, ondemand::value value) {
        ondemand::json_type type{};
        if (value.type().get(type) != simdjson::SUCCESS)
            return false;
        if (isContainer(type)) {
            storeScalar(key, {ondemand::json_type::null, {}}); // only "paths" may be a container
            const bool isPaths = key == jsonKey::paths && type == ondemand::json_type::array;
            if (isPaths)
                fields_.paths.emplace();
            return open(value, type, isPaths);
        }
        const auto scalar = readScalar(value, type);
        if (scalar)
            storeScalar(key, *scalar);
        return scalar.has_value();
    }

    /// An element of "paths", or a value that no command uses.
    bool walkValue(ondemand::value value, bool isPath) {
        ondemand::json_type type{};
        if (value.type().get(type) != simdjson::SUCCESS)
            return false;
        if (isPath && type != ondemand::json_type::string)
            fields_.paths.reset();
        if (isContainer(type))
            return open(value, type, false);
        const auto scalar = readScalar(value, type);
        if (scalar && isPath && fields_.paths)
            appendPath(scalar->text);
        return scalar.has_value();
    }

    bool open(ondemand::value value, ondemand::json_type type, bool isPaths) {
        if (open_.size() >= maximumDepth)
            return false;
        if (type == ondemand::json_type::object) {
            ondemand::object object;
            if (value.get_object().get(object) != simdjson::SUCCESS)
                return false;
            open_.push_back({object.begin()});
        } else {
            ondemand::array array;
            if (value.get_array().get(array) != simdjson::SUCCESS)
                return false;
            open_.push_back({array.begin(), isPaths});
        }
        return true;
    }

    void storeScalar(std::string_view key, const Scalar& scalar) {
        if (key == jsonKey::command)
            fields_.command = viewOf(scalar);
        else if (key == jsonKey::requestID)
            fields_.requestID = unsignedOf(scalar);
        else if (key == jsonKey::renamePrompt)
            fields_.renamePrompt = booleanOf(scalar);
        else if (key == jsonKey::textBase64)
            fields_.textBase64 = viewOf(scalar);
        else if (key == jsonKey::imageBase64)
            fields_.imageBase64 = viewOf(scalar);
        else if (key == jsonKey::marker)
            fields_.marker = stringOf(scalar);
        else if (key == jsonKey::kind)
            fields_.kind = stringOf(scalar);
        else if (key == jsonKey::paths)
            fields_.paths.reset();
        else if (key == jsonKey::expectedSequence)
            fields_.expectedSequence = unsignedOf(scalar);
    }

    static bool isContainer(ondemand::json_type type) {
        return type == ondemand::json_type::object || type == ondemand::json_type::array;
    }

    /// nullopt if the scalar is malformed.
    std::optional<Scalar> readScalar(ondemand::value value, ondemand::json_type type) {
        const std::string_view token = withoutTrailingWhitespace(value.raw_json_token());
        switch (type) {
        case ondemand::json_type::string: {
            // Consume the string: otherwise simdjson would accept it as a key if a colon follows.
            if (value.get_raw_json_string().error() != simdjson::SUCCESS || token.size() < 2 ||
                !token.ends_with('"'))
                return std::nullopt;
            const auto text = unescaped(token.substr(1, token.size() - 2));
            return text ? std::optional(Scalar{type, *text}) : std::nullopt;
        }
        case ondemand::json_type::number:
            return isJsonNumber(token) ? std::optional(Scalar{type, token}) : std::nullopt;
        case ondemand::json_type::boolean:
            return token == "true" || token == "false" ? std::optional(Scalar{type, token}) : std::nullopt;
        case ondemand::json_type::null:
            return token == "null" ? std::optional(Scalar{type, token}) : std::nullopt;
        default:
            return std::nullopt;
        }
    }

    /// The part of the line that simdjson shows as a read-only view. The decoder may overwrite the line.
    std::span<char> writable(std::string_view text) const {
        const auto offset = static_cast<std::size_t>(text.data() - line_.text.data());
        return line_.text.subspan(offset, text.size());
    }

    std::optional<std::string_view> unescaped(std::string_view text) {
        if (text.empty() || std::memchr(text.data(), '\\', text.size()) == nullptr)
            return text;
        return unescapeJsonString(writable(text));
    }

    /// `raw` points behind a key's opening quote. simdjson has checked that a closing quote follows.
    std::optional<std::string_view> unescapedKey(const char* raw) {
        std::size_t length = 0;
        while (raw[length] != '"')
            length += raw[length] == '\\' ? 2 : 1;
        return unescaped({raw, length});
    }

    static std::optional<std::string_view> viewOf(const Scalar& scalar) {
        return scalar.type == ondemand::json_type::string ? std::optional(scalar.text) : std::nullopt;
    }

    /// A payload's place in the line is empty.
    std::string completeText(std::string_view text) const {
        return isPayload(line_, text) ? line_.payload->content.text() : std::string(text);
    }

    std::optional<std::string> stringOf(const Scalar& scalar) const {
        try {
            return scalar.type == ondemand::json_type::string ? std::optional(completeText(scalar.text))
                                                              : std::nullopt;
        } catch (const std::bad_alloc&) {
            return std::nullopt;
        }
    }

    void appendPath(std::string_view path) {
        try {
            fields_.paths->push_back(completeText(path));
        } catch (const std::bad_alloc&) {
            fields_.paths.reset();
        }
    }

    /// A boolean counts as 1 or 0.
    static std::optional<std::uint64_t> unsignedOf(const Scalar& scalar) {
        if (scalar.type == ondemand::json_type::boolean)
            return scalar.text == "true" ? 1 : 0;
        return scalar.type == ondemand::json_type::number ? unsignedFromJsonNumber(scalar.text)
                                                          : std::nullopt;
    }

    static std::optional<bool> booleanOf(const Scalar& scalar) {
        if (scalar.type == ondemand::json_type::boolean)
            return scalar.text == "true";
        return scalar.type == ondemand::json_type::number ? booleanFromJsonNumber(scalar.text) : std::nullopt;
    }

    const LineReader::Line& line_;
    std::vector<OpenContainer>& open_;
    Fields fields_;
};

ClipboardCommand commandFrom(const LineReader::Line& line, Fields fields) {
    const std::string_view name = *fields.command;
    const std::uint64_t requestID = *fields.requestID;
    if (name == commandName::configureFilePrompt)
        return command::ConfigureFilePrompt{requestID, fields.renamePrompt.value_or(false)};
    if (name == commandName::ping)
        return command::Ping{requestID};
    if (name == commandName::discardPending)
        return command::DiscardPending{requestID};
    if (name == commandName::quit)
        return command::Quit{requestID};
    if (name == commandName::writeText)
        return command::WriteText{requestID, bytesOf(line, fields.textBase64), std::move(fields.marker)};
    if (name == commandName::writeImageData)
        return command::WriteImageData{requestID, bytesOf(line, fields.imageBase64)};
    if (name == commandName::writeFiles)
        return command::WriteFiles{requestID, std::move(fields.kind),
                                   std::move(fields.paths).value_or(std::vector<std::string>()),
                                   std::move(fields.marker), fields.expectedSequence};
    return command::Unknown{requestID};
}

} // namespace

class CommandDecoder::Parser {
public:
    /// All memory for walking a line comes first, because a walk changes the line.
    Parser() { open_.reserve(maximumDepth); }

    std::optional<Fields> walk(const LineReader::Line& line, ondemand::document& document) {
        open_.clear();
        return LineWalker(line, open_).walk(document);
    }

    ondemand::parser simdjson;

private:
    std::vector<OpenContainer> open_;
};

CommandDecoder::CommandDecoder() = default;

CommandDecoder::~CommandDecoder() = default;

std::optional<ClipboardCommand> CommandDecoder::decode(const LineReader::Line& line) {
    std::string_view text(line.text.data(), line.text.size());
    if (text.starts_with(byteOrderMark)) // RFC 8259, section 8.1 allows a parser to ignore it
        text.remove_prefix(byteOrderMark.size());

    if (parser_ == nullptr)
        parser_ = std::make_unique<Parser>();
    std::optional<Fields> fields;
    ondemand::document document;
    const simdjson::padded_string_view padded(text, text.size() + LineReader::padding);
    // Checks the encoding, the quotes and the characters of the whole line.
    const simdjson::error_code error = parser_->simdjson.iterate(padded).get(document);
    if (error == simdjson::MEMALLOC)
        throw std::bad_alloc();
    if (error == simdjson::SUCCESS)
        fields = parser_->walk(line, document);
    if (text.size() > keptParserBytes)
        parser_.reset();

    if (!fields || !fields->command || !fields->requestID)
        return std::nullopt;
    return commandFrom(line, std::move(*fields));
}

} // namespace tavel
