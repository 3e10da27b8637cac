#include "Console/Request.h"

namespace tavel {

namespace {

Request request(std::string_view name, std::string_view command) {
    Request made{std::string(name), {}};
    made.fields.add("command", command);
    return made;
}

} // namespace

Request pingRequest() {
    return request("ping", "ping");
}

Request discardRequest() {
    return request("discard", "discard_pending");
}

Request quitRequest() {
    Request quit = request("quit", "quit");
    quit.endsAgent = true;
    return quit;
}

Request promptRequest(bool enabled) {
    Request prompt = request("prompt", "configure_file_prompt");
    prompt.fields.add("rename_prompt", enabled);
    return prompt;
}

Request textRequest(std::string_view text) {
    Request write = request("text", "write_text");
    write.fields.addBase64("text_b64", text).add("marker", consoleMarker);
    return write;
}

Request imageDataRequest(std::string_view image) {
    Request write = request("image-data", "write_image_data");
    write.fields.addBase64("image_b64", image);
    return write;
}

Request pathsRequest(std::string_view kind, std::span<const std::string> paths) {
    Request write = request(kind, "write_files");
    write.fields.add("kind", kind).add("paths", paths).add("marker", consoleMarker);
    return write;
}

} // namespace tavel
