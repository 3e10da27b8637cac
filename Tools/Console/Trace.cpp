#include "Console/Trace.h"

#include "Support/Base64.h"
#include "Support/Error.h"
#include "Support/Files.h"
#include "Support/JsonWriter.h"
#include "Support/Text.h"

#include <fcntl.h>
#include <simdjson.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <fstream>
#include <optional>
#include <utility>

namespace tavel {

namespace {

using simdjson::dom::object;

/// The version of the form. The first line has it.
constexpr std::uint64_t traceForm = 1;

namespace traceKey {

constexpr std::string_view form = "trace";
constexpr std::string_view begun = "begun"; // the time of day, UTC
constexpr std::string_view time = "microseconds";
constexpr std::string_view from = "from";
constexpr std::string_view line = "line";
constexpr std::string_view lineBase64 = "line_b64"; // of a line that is not UTF-8
constexpr std::string_view end = "end";             // of the agent

} // namespace traceKey

constexpr std::string_view parentName = "parent";
constexpr std::string_view agentName = "agent";

std::string timeOfDay() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    char text[sizeof "2026-01-01T00:00:00Z"];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

[[noreturn]] void fail(const std::filesystem::path& path, const std::string& what) {
    throw Error("Tavel", 1, path.string() + ": " + what);
}

std::optional<std::string> lineIn(const object& fields) {
    std::string_view text;
    if (fields.at_key(traceKey::line).get(text) == simdjson::SUCCESS)
        return std::string(text);
    if (fields.at_key(traceKey::lineBase64).get(text) != simdjson::SUCCESS)
        return std::nullopt;
    const auto bytes = decodeBase64(text);
    return bytes ? std::optional<std::string>(bytes->view()) : std::nullopt;
}

/// nullopt if the object is neither a line of a session nor its end.
std::optional<TracedLine> tracedLineIn(const object& fields) {
    std::uint64_t microseconds = 0;
    std::string_view from;
    if (fields.at_key(traceKey::time).get(microseconds) != simdjson::SUCCESS ||
        fields.at_key(traceKey::from).get(from) != simdjson::SUCCESS ||
        (from != parentName && from != agentName))
        return std::nullopt;
    auto text = lineIn(fields);
    if (!text && fields.at_key(traceKey::end).error() != simdjson::SUCCESS)
        return std::nullopt;
    return TracedLine{std::chrono::microseconds(microseconds),
                      from == parentName ? Speaker::parent : Speaker::agent, std::move(text).value_or("")};
}

} // namespace

TraceWriter::TraceWriter(const std::filesystem::path& path)
    : file_(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR)) {
    if (file_ < 0)
        throw Error("POSIX", errno, "Cannot create " + path.string() + ": " + std::strerror(errno));
    write(JsonObject().add(traceKey::form, traceForm).add(traceKey::begun, timeOfDay()).takeLine());
}

TraceWriter::~TraceWriter() {
    close(file_);
}

void TraceWriter::note(Speaker speaker, std::string_view line) {
    JsonObject object;
    object.add(traceKey::time, microseconds())
        .add(traceKey::from, speaker == Speaker::parent ? parentName : agentName);
    if (isUtf8(line))
        object.add(traceKey::line, line);
    else
        object.addBase64(traceKey::lineBase64, line);
    write(object.takeLine());
}

void TraceWriter::noteEnd(std::string_view description) {
    write(JsonObject()
              .add(traceKey::time, microseconds())
              .add(traceKey::from, agentName)
              .add(traceKey::end, description)
              .takeLine());
}

std::int64_t TraceWriter::microseconds() const {
    return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start_).count();
}

void TraceWriter::write(std::string_view line) {
    failed_ = failed_ || !writeAll(file_, line);
}

std::vector<TracedLine> readTrace(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        fail(path, std::strerror(errno));
    std::vector<TracedLine> lines;
    simdjson::dom::parser parser;
    std::size_t number = 0;
    for (std::string text; std::getline(file, text);) {
        object fields;
        if (parser.parse(text).get(fields) != simdjson::SUCCESS) {
            if (file.eof()) // the console was killed while it wrote this line
                break;
            fail(path, "line " + std::to_string(number + 1) + " is no JSON object");
        }
        std::uint64_t form = 0;
        if (++number == 1) {
            if (fields.at_key(traceKey::form).get(form) != simdjson::SUCCESS || form != traceForm)
                fail(path, "this is no record of a session, or one of another version");
            continue;
        }
        auto line = tracedLineIn(fields);
        if (!line)
            fail(path, "line " + std::to_string(number) + " is no line of a session");
        lines.push_back(std::move(*line));
    }
    if (number == 0)
        fail(path, "this is no record of a session");
    return lines;
}

} // namespace tavel
