#include "Console/Demo.h"

#include "Console/ChildProcess.h"
#include "Console/HumanText.h"
#include "Console/LineSplitter.h"
#include "Console/Paragraph.h"
#include "Console/SamplePicture.h"
#include "ImageHeaders/ImageHeader.h"
#include "Support/DirectoryEntries.h"
#include "Support/Error.h"
#include "Support/Files.h"
#include "Support/InputFile.h"

#include <fcntl.h>
#include <glib.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <system_error>
#include <utility>

namespace tavel {

namespace {

constexpr std::string_view sentText = "Bonjour à tous, voilà l’été";
constexpr std::string_view copiedText =
    "Shopping list:\n\t- bread\n\t- \x1b[31mred\x1b[0m apples\n\t- café crème ☕";

constexpr std::string_view formattedText = "Fresh bread";
constexpr std::string_view formattedPage = "<p><b>Fresh</b> bread</p>";

[[noreturn]] void fail(const std::string& what) {
    throw Error("Tavel", 1, what);
}

void expect(bool holds, const std::string& what) {
    if (!holds)
        fail(what);
}

bool isSamplePicture(std::string_view file) {
    // The agent may compress the pixels differently.
    const auto header = readImageHeader(file);
    return header && header->typeIdentifier == "public.png" && header->width == samplePictureWidth &&
           header->height == samplePictureHeight;
}

Bytes contentOf(const std::string& path) {
    InputFile file(path, InputFile::Links::refuse);
    return file.read(file.size());
}

std::filesystem::path makeTemporaryDirectory() {
    GError* error = nullptr;
    const std::unique_ptr<gchar, decltype(&g_free)> path(g_dir_make_tmp("tavel-console-XXXXXX", &error),
                                                         g_free);
    if (path == nullptr) {
        const std::string description = error->message;
        g_error_free(error);
        fail("Cannot make a temporary directory: " + description);
    }
    return std::filesystem::canonical(path.get());
}

} // namespace

Demo::Demo(Programs programs, std::chrono::milliseconds timeout)
    : programs_(std::move(programs)), timeout_(timeout),
      pasteboard_("tavel-console-demo-" + std::to_string(getpid())), directory_(makeTemporaryDirectory()) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        signalWatches_.push_back(Watch::signal(number, [this] { interrupted_ = true; }));
}

Demo::~Demo() {
    if (agent_ != nullptr && agent_->isRunning())
        agent_->end(timeout_);
    // Both would end the next wait at once.
    interrupted_ = false;
    agentEnd_.reset();
    try {
        runPasteboardTool({"clear"});
    } catch (const Error& error) {
        const std::string complaint = "tavel-console: the pasteboard " + pasteboard_ + " is not cleared: ";
        static_cast<void>(writeAll(STDERR_FILENO, complaint + error.what() + "\n"));
    }
    static_cast<void>(removeEntry(AT_FDCWD, directory_.string()));
}

void Demo::run() {
    narrate("This plays a parent application, the clipboard agent and another application.");
    narrate("They use a pasteboard of their own: what you have copied stays where it is.");
    startAgent();
    sendText();
    sendFiles();
    copyTextElsewhere();
    copyFilesElsewhere();
    sendPicture();
    sendFormats();
    copyPictureElsewhere();
    copyFormatsElsewhere();
    quitAgent();
    narrate("\nEverything happened as expected.");
}

void Demo::startAgent() {
    narrate("\nThe parent starts the agent, and asks whether it is there:");
    agent_ = std::make_unique<Agent>(
        programs_.agent, pasteboard_,
        Agent::Handlers{[](std::string_view) {}, [](std::string_view) {},
                        [this](const AgentMessage& message, std::string_view requestName) {
                            said_.push_back({message, describeMessage(message, requestName).text});
                        },
                        [this](std::string_view line) {
                            said_.push_back({std::nullopt, describeUnintelligible(line).text});
                        },
                        [this](int status) { agentEnd_ = status; }});
    command("ping");
}

void Demo::sendText() {
    narrate("\nThe parent puts a text on the pasteboard, and another application pastes it:");
    command("text " + std::string(sentText));
    const std::string pasted = runPasteboardTool({"paste"});
    showIndented("pasted: " + quotedText(pasted));
    expect(pasted == sentText, "The other application pasted another text.");
}

void Demo::sendFiles() {
    narrate("\nThe parent puts two files there, and another application asks for them:");
    const std::string first = writeFile("letter.txt", "Dear all,\n").string();
    const std::string second = writeFile("summer photos.txt", "none yet\n").string();
    command("files letter.txt 'summer photos.txt'");
    const std::string pasted = runPasteboardTool({"paste-files"});
    LineSplitter().append(pasted,
                          [this](std::string_view path) { showIndented("pasted: " + visibleText(path)); });
    expect(pasted == first + "\n" + second + "\n",
           "The other application found other files: " + quotedText(pasted));
}

void Demo::copyTextElsewhere() {
    narrate("\nAnother application copies a text, and the agent tells the parent:");
    runPasteboardTool({"copy"}, std::string(copiedText));
    const auto change = nextChange<event::TextChange>("the copied text");
    expect(change.text.view() == copiedText, "The agent told of another text.");
    expect(change.marker.empty(), "The agent took the text for the parent's own.");
}

void Demo::copyFilesElsewhere() {
    narrate("\nAnother application copies a file and a directory:");
    const std::vector<std::string> paths{writeFile("invoice n°7.txt", "42 EUR\n").string(),
                                         (directory_ / "music").string()};
    expect(createPrivateDirectory(paths.back()), "Cannot make a directory in " + directory_.string());
    runPasteboardTool({"copy-files", paths[0], paths[1]});
    const auto change = nextChange<event::PathsChange>("the copied files");
    expect(change.kind == contentKind::files && change.paths == paths, "The agent told of other files.");
}

void Demo::sendPicture() {
    narrate("\nThe parent puts a picture there as a file, and another application pastes it:");
    writeFile("flag.png", samplePicture());
    command("image flag.png");
    expect(pasteData("png") == samplePicture(), "The other application pasted another picture.");
    narrate("\nThe parent sends the picture's bytes themselves:");
    command("image-data flag.png");
    expect(isSamplePicture(pasteData("png")), "The other application pasted another picture.");
}

void Demo::sendFormats() {
    narrate("\nThe parent puts one thing there in three formats, and another application may choose:");
    writeFile("text.html", formattedPage);
    writeFile("text.txt", formattedText);
    writeFile("image.png", samplePicture());
    command("formats text.html text.txt image.png");
    // The agent adds a byte-order mark: without it, readers assume another encoding of HTML.
    expect(pasteData("html").ends_with(formattedPage), "The other application pasted another page.");
    expect(pasteData("text") == formattedText, "The other application pasted another text.");
    expect(pasteData("png") == samplePicture(), "The other application pasted another picture.");
}

void Demo::copyPictureElsewhere() {
    narrate("\nAnother application copies a picture, and the parent gets it as a file:");
    runPasteboardTool({"copy", writeFile("other flag.png", samplePicture()).string()});
    const auto change = nextChange<event::PathsChange>("the copied picture");
    expect(change.kind == contentKind::image && change.paths.size() == 1 &&
               isSamplePicture(contentOf(change.paths.front()).view()),
           "The agent told of another picture.");
}

void Demo::copyFormatsElsewhere() {
    narrate("\nAnother application copies a page that is also text, and the parent gets a file for each:");
    runPasteboardTool({"set", "html=" + writeFile("page.html", formattedPage).string(),
                       "text=" + writeFile("page.txt", formattedText).string()});
    const auto change = nextChange<event::PathsChange>("the copied page");
    expect(change.kind == contentKind::formats && change.paths.size() == 2,
           "The agent told of other formats.");
    const std::filesystem::path page = change.paths.front();
    const std::filesystem::path text = change.paths.back();
    expect(page.filename() == "text.html" && contentOf(page.string()).view().ends_with(formattedPage),
           "The agent told of another page.");
    expect(text.filename() == "text.txt" && contentOf(text.string()).view() == formattedText,
           "The agent told of another text.");
}

void Demo::quitAgent() {
    narrate("\nThe parent asks once more whether the agent is there, and ends it:");
    command("ping");
    command("quit");
    await([this] { return agentEnd_.has_value(); }, "the end of the agent");
    expect(said_.empty(), "The agent said more than was expected.");
    showIndented("the agent ended with " + describeEnd(*agentEnd_));
    expect(*agentEnd_ == 0, "The agent ended in another way than it should.");
}

void Demo::command(const std::string& line) {
    showIndented("> " + line);
    Wish wish = readHumanCommand(line, {directory_, directory_});
    auto& request = std::get<wish::Request>(wish);
    const std::uint64_t requestID = agent_->send(std::move(request.name), std::move(request.command));
    const auto message = nextMessage("a reply");
    const auto* const reply = message ? std::get_if<Reply>(&*message) : nullptr;
    expect(reply != nullptr && reply->requestID == requestID, "The agent did not reply to the command.");
    expect(reply->ok, "The agent could not carry out the command.");
}

std::optional<AgentMessage> Demo::nextMessage(std::string_view expected) {
    await([this] { return !said_.empty(); }, expected);
    Said next = std::move(said_.front());
    said_.pop_front();
    showIndented(next.description);
    return std::move(next.message);
}

template <typename Change>
Change Demo::nextChange(std::string_view expected) {
    const auto first = nextMessage("the news that the clipboard changed");
    const auto* const announcement = first ? std::get_if<event::Announcement>(&*first) : nullptr;
    expect(announcement != nullptr, "The agent did not announce the change.");
    auto second = nextMessage(expected);
    auto* const change = second ? std::get_if<Change>(&*second) : nullptr;
    expect(change != nullptr && change->sequence == announcement->sequence,
           "The agent did not tell of " + std::string(expected) + ".");
    return std::move(*change);
}

std::string Demo::pasteData(const std::string& type) {
    std::string pasted = runPasteboardTool({"paste", "--type", type});
    showIndented("pasted: " + humanSize(pasted.size()) + " of " + type);
    return pasted;
}

std::string Demo::runPasteboardTool(const std::vector<std::string>& arguments, const std::string& input) {
    std::vector<std::string> all{programs_.pasteboardTool.string(), "--pasteboard", pasteboard_};
    all.insert(all.end(), arguments.begin(), arguments.end());
    std::string output;
    std::optional<int> end;
    ChildProcess tool(
        all, {[&](std::string_view bytes) { output.append(bytes); }, [&](int status) { end = status; }});
    tool.send(input);
    tool.closeInput();
    await([&] { return end.has_value(); }, "the other application");
    expect(*end == 0, "The other application ended with " + describeEnd(*end) + ".");
    return output;
}

std::filesystem::path Demo::writeFile(const std::string& name, std::string_view content) {
    std::filesystem::path path = directory_ / name;
    std::ofstream file(path);
    file << content;
    file.close();
    expect(!file.fail(), "Cannot write " + path.string());
    return path;
}

void Demo::narrate(std::string_view line) const {
    expect(writeAll(STDOUT_FILENO, std::string(line) + '\n'),
           "Standard output: " + std::generic_category().message(errno));
}

void Demo::showIndented(const std::string& text) const {
    std::string indented = "  ";
    for (const char c : text) {
        indented += c;
        if (c == '\n')
            indented += "  ";
    }
    narrate(indented);
}

/// Waits until `done`. Throws Error on time-out, on Ctrl-C and if the agent ends.
void Demo::await(const std::function<bool()>& done, std::string_view what) {
    runUntil([&] { return done() || agentEnd_ || interrupted_; }, timeout_);
    if (done())
        return;
    expect(!interrupted_, "Interrupted.");
    expect(!agentEnd_,
           "The agent ended unexpectedly: " + (agentEnd_ ? describeEnd(*agentEnd_) : std::string()));
    fail("Waited in vain for " + std::string(what) + ".");
}

} // namespace tavel
