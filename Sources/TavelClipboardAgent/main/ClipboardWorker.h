#pragma once

#include "Platform/Platform.h"
#include "TavelClipboardAgent/FilePaste/FilePaste.h"
#include "TavelClipboardAgent/main/ClipboardCommand.h"
#include "TavelClipboardAgent/main/Output.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// The one long-lived object of the agent: it watches the pasteboard, carries out the parent's commands and
/// reports to the parent. Main thread only. Held by a shared_ptr, because everything that outlives a call
/// holds it weakly.
class ClipboardWorker : public std::enable_shared_from_this<ClipboardWorker> {
public:
    /// The descriptors that lead to the parent. They stay the caller's.
    struct Pipes {
        int input;
        int output;
    };

    /// Lowers the process's priority. What is on the pasteboard now is never reported. A pasteboard that
    /// cannot be opened is taken for an empty one that refuses every write; the system's log says why.
    /// `platform` must never be destroyed before the process ends once `run` was called: the reader of
    /// commands may be blocked in it.
    ClipboardWorker(Platform& platform, Pipes pipes, std::int32_t parentPID,
                    const std::optional<std::string>& pasteboardName);

    /// Serves the parent until it says "quit", closes its end, or is gone.
    void run();

    /// Carries out one command; sends exactly one reply.
    void handle(ClipboardCommand command);

    /// Reports what changed on the pasteboard since the last call, if anything did.
    void poll();

    /// Makes `run` return. Never undone.
    void stop();

    /// Made on first use.
    FilePaste& filePaste();

    /// Takes note that pasting a generated file gave the pasteboard this change count: it is the agent's own
    /// change, which the poll does not report, but the parent is told of the file.
    void generatedFilePasted(std::int64_t changeCount);

    const std::filesystem::path& exportDirectory() const { return exportDirectory_; }

private:
    /// What carrying out a command gives: a reason for the failure, or none.
    using Result = std::optional<std::string>;

    // ClipboardWorkerCommands.cpp
    Result execute(const command::ConfigureFilePrompt& command);
    Result execute(const command::Ping& command);
    Result execute(const command::DiscardPending& command);
    Result execute(const command::Quit& command);
    Result execute(const command::WriteText& command);
    Result execute(const command::WriteImageData& command);
    Result execute(const command::WriteFiles& command);
    Result execute(const command::Unknown& command);
    Result writeFileReferences(const command::WriteFiles& command);
    bool replaceContents(const std::function<bool()>& write);
    bool hasChangedSince(std::optional<std::uint64_t> expectedSequence);
    void respond(std::uint64_t requestID, bool ok, std::string_view reason);

    // ClipboardWorkerPoll.cpp
    bool captureFiles(std::string_view marker, std::uint64_t sequence);
    void captureText(std::string_view marker, std::uint64_t sequence);
    void warn(std::string_view message);
    std::string markerText();

    std::uint64_t sequence();
    static std::uint64_t sequenceFrom(std::int64_t changeCount);

    Platform& platform_;
    Pipes pipes_;
    std::shared_ptr<Pasteboard> pasteboard_;
    Output output_;
    std::int64_t previousChangeCount_ = 0; // the last one that was reported, or that the agent itself made
    std::shared_ptr<FilePaste> filePaste_;
    bool stopping_ = false;
    std::int64_t exportGeneration_ = 0; // an export that began before it moved is stale
    std::filesystem::path exportDirectory_;
    std::int32_t expectedParentPID_;
};

} // namespace tavel
