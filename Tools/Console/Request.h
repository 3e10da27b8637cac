#pragma once

#include "Support/JsonWriter.h"

#include <span>
#include <string>
#include <string_view>

namespace tavel {

/// A command to the agent that lacks only its number.
struct Request {
    std::string name; // what people call it: the word they typed
    JsonObject fields;
    bool endsAgent = false;
};

/// What the content that the console sends is marked with: the agent reports it with every change.
inline constexpr std::string_view consoleMarker = "tavel-console";

Request pingRequest();
Request discardRequest();
Request quitRequest();
Request promptRequest(bool enabled);
Request textRequest(std::string_view text);

/// `image` is the content of an image file.
Request imageDataRequest(std::string_view image);

/// `kind` is "files", "image" or "formats". With a path that is not UTF-8 the fields are not valid.
Request pathsRequest(std::string_view kind, std::span<const std::string> paths);

} // namespace tavel
