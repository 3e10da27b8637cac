#pragma once

#include <string_view>

/// The names that both ends of the protocol write and read, once: keys of JSON objects, and the values of
/// "command" and "event". Only the encoders and decoders beside this file use them.
namespace tavel {

namespace jsonKey {

// of every command, and of replies
inline constexpr std::string_view command = "command";
inline constexpr std::string_view requestID = "request_id";

// of some commands
inline constexpr std::string_view renamePrompt = "rename_prompt";
inline constexpr std::string_view imageBase64 = "image_b64";
inline constexpr std::string_view expectedSequence = "expected_sequence";

// of commands and events
inline constexpr std::string_view textBase64 = "text_b64";
inline constexpr std::string_view marker = "marker";
inline constexpr std::string_view kind = "kind";
inline constexpr std::string_view paths = "paths";

// of replies and events
inline constexpr std::string_view ok = "ok";
inline constexpr std::string_view reason = "reason";
inline constexpr std::string_view sequence = "sequence";
inline constexpr std::string_view event = "event";
inline constexpr std::string_view bytes = "bytes";
inline constexpr std::string_view level = "level";
inline constexpr std::string_view message = "message";

} // namespace jsonKey

namespace commandName {

inline constexpr std::string_view configureFilePrompt = "configure_file_prompt";
inline constexpr std::string_view ping = "ping";
inline constexpr std::string_view discardPending = "discard_pending";
inline constexpr std::string_view quit = "quit";
inline constexpr std::string_view writeText = "write_text";
inline constexpr std::string_view writeImageData = "write_image_data";
inline constexpr std::string_view writeFiles = "write_files";

} // namespace commandName

namespace eventName {

inline constexpr std::string_view change = "change";
inline constexpr std::string_view log = "log";
inline constexpr std::string_view fileRenamed = "file_renamed";

} // namespace eventName

/// The kind of the change that announces a content, without describing it.
inline constexpr std::string_view announcementKind = "unsupported";

} // namespace tavel
