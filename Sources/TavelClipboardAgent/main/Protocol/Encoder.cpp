#include "TavelClipboardAgent/main/Protocol/Encoder.h"

#include "Support/JsonWriter.h"
#include "TavelClipboardAgent/main/Protocol/Names.h"

namespace tavel {

namespace {

std::optional<std::string> lineOf(JsonObject& object) {
    return object.isValid() ? std::optional(object.takeLine()) : std::nullopt;
}

class MessageFields {
public:
    explicit MessageFields(JsonObject& object) : object_(object) {}

    void operator()(const Reply& reply) {
        object_.add(jsonKey::requestID, reply.requestID)
            .add(jsonKey::ok, reply.ok)
            .add(jsonKey::reason, reply.reason)
            .add(jsonKey::sequence, reply.sequence);
    }

    void operator()(const event::Announcement& announcement) {
        begin(eventName::change)
            .add(jsonKey::kind, announcementKind)
            .add(jsonKey::marker, announcement.marker)
            .add(jsonKey::sequence, announcement.sequence);
    }

    /// Deliberate: this is the one change without a kind; the parent knows it by its text.
    void operator()(const event::TextChange& change) {
        begin(eventName::change)
            .addBase64(jsonKey::textBase64, change.text.view())
            .add(jsonKey::marker, change.marker)
            .add(jsonKey::bytes, change.text.size())
            .add(jsonKey::sequence, change.sequence);
    }

    void operator()(const event::PathsChange& change) {
        begin(eventName::change)
            .add(jsonKey::kind, change.kind)
            .add(jsonKey::paths, change.paths)
            .add(jsonKey::marker, change.marker)
            .add(jsonKey::sequence, change.sequence);
    }

    void operator()(const event::Log& log) {
        begin(eventName::log).add(jsonKey::level, log.level).add(jsonKey::message, log.message);
    }

    void operator()(const event::FileRenamed& renamed) {
        begin(eventName::fileRenamed).add(jsonKey::sequence, renamed.sequence);
    }

private:
    JsonObject& begin(std::string_view event) { return object_.add(jsonKey::event, event); }

    JsonObject& object_;
};

class CommandFields {
public:
    explicit CommandFields(JsonObject& object) : object_(object) {}

    void operator()(const command::ConfigureFilePrompt& command) {
        begin(commandName::configureFilePrompt).add(jsonKey::renamePrompt, command.renamePrompt);
    }

    void operator()(const command::Ping&) { begin(commandName::ping); }

    void operator()(const command::DiscardPending&) { begin(commandName::discardPending); }

    void operator()(const command::Quit&) { begin(commandName::quit); }

    void operator()(const command::WriteText& command) {
        begin(commandName::writeText);
        addBytes(jsonKey::textBase64, command.text);
        addText(jsonKey::marker, command.marker);
    }

    void operator()(const command::WriteImageData& command) {
        begin(commandName::writeImageData);
        addBytes(jsonKey::imageBase64, command.image);
    }

    void operator()(const command::WriteFiles& command) {
        begin(commandName::writeFiles);
        addText(jsonKey::kind, command.kind);
        object_.add(jsonKey::paths, command.paths);
        addText(jsonKey::marker, command.marker);
        if (command.expectedSequence)
            object_.add(jsonKey::expectedSequence, *command.expectedSequence);
    }

    void operator()(const command::Unknown&) {}

private:
    JsonObject& begin(std::string_view name) { return object_.add(jsonKey::command, name); }

    void addText(std::string_view key, const std::optional<std::string>& value) {
        if (value)
            object_.add(key, *value);
    }

    void addBytes(std::string_view key, const std::optional<Bytes>& value) {
        if (value)
            object_.addBase64(key, value->view());
    }

    JsonObject& object_;
};

} // namespace

std::optional<std::string> encodeMessage(const AgentMessage& message) {
    JsonObject object;
    std::visit(MessageFields(object), message);
    return lineOf(object);
}

std::optional<std::string> encodeCommand(const ClipboardCommand& command) {
    if (std::holds_alternative<command::Unknown>(command))
        return std::nullopt;
    JsonObject object;
    std::visit(CommandFields(object), command);
    object.add(jsonKey::requestID, std::visit([](const auto& one) { return one.requestID; }, command));
    return lineOf(object);
}

} // namespace tavel
