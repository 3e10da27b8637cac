#pragma once

#include <cstdint>
#include <string_view>

/// By what the agent knows again what it made itself.
namespace tavel::generatedFile {

/// The pasteboard type whose value marks the file URL beside it as that of a generated file.
inline constexpr std::string_view alternative = "com.brennic.generated-file";
inline constexpr std::string_view markValue = "1";

/// The user data of the key events that the agent posts: "TAVP".
inline constexpr std::int64_t tag = 0x54415650;

} // namespace tavel::generatedFile
