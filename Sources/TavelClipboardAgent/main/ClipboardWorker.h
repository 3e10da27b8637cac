#pragma once

#include "Platform/Platform.h"
#include "Support/MemoryReserve.h"
#include "Support/OwnerThread.h"
#include "TavelClipboardAgent/FilePaste/FilePaste.h"
#include "TavelClipboardAgent/main/Export.h"
#include "TavelClipboardAgent/main/ImageExport.h"
#include "TavelClipboardAgent/main/Protocol/ClipboardCommand.h"
#include "TavelClipboardAgent/main/Protocol/Output.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

struct Capture;
struct FormatExport;
class MemoryLooks;
class PollSchedule;

/// The one long-lived object of the agent: it watches the pasteboard, carries out the parent's commands and
/// reports to the parent. Main thread only. Held by a shared_ptr, because everything that outlives a call
/// holds it weakly.
class ClipboardWorker : public std::enable_shared_from_this<ClipboardWorker> {
public:
    /// The descriptors to and from the parent. The caller keeps their ownership.
    struct Pipes {
        int input;
        int output;
        /// How long `run` waits at its end for a parent that takes nothing of the output, if nothing tells
        /// that this parent is gone: it is not watched, and the input has ended.
        std::chrono::milliseconds outputTimeOut = std::chrono::seconds(10);
    };

    /// Lowers the process's priority. The current content of the pasteboard is never reported. A pasteboard
    /// that cannot be opened is replaced by one that is empty and refuses every write; the system's log says
    /// why. Once `run` was called, `platform` must exist until the process ends: the command reader may still
    /// use it.
    ClipboardWorker(Platform& platform, Pipes pipes, std::int32_t parentPID,
                    const std::optional<std::string>& pasteboardName);

    /// Serves the parent until the command "quit", the end of the input, or the parent's exit. Returns when
    /// the parent has taken all output or is gone.
    void run();

    /// Executes one command and sends exactly one reply. After `stop` it does nothing.
    void handle(ClipboardCommand command);

    /// Reports the pasteboard's content if it has changed since the last call and the parent has taken the
    /// last report. Announces it at once; what has to come from another program is described when it is
    /// there, unless the content changes or the agent writes before that.
    void poll();

    /// Makes `run` return, for good. Nothing changes the pasteboard any more.
    void stop();

    /// Notes that no command will come any more, and stops.
    void endOfInput();

    /// Made on first use.
    FilePaste& filePaste();

    /// Notes that publishing a generated file gave the pasteboard this change count. The poll does not report
    /// this change; the parent gets an event of its own for the file.
    void generatedFilePasted(std::int64_t changeCount);

    // Background jobs post these calls when they are done. An export that is stale by then (the content has
    // changed, or the parent has discarded it) is deleted; a published one replaces the previous one.

    void publishImage(ImageExport finished);
    void publishFormats(FormatExport finished);

    std::filesystem::path exportDirectory() const { return exportDirectory_->path(); }

    /// Whether a background job is running. It may outlast `run`.
    bool isExporting() const { return exportSlot_->isTaken(); }

    /// Whether the parent has taken all output so far.
    bool hasWrittenOutput() const { return output_->hasWritten(output_->queuedLines()); }

private:
    /// Parents below 2 are not watched: 1 is the parent of every orphan.
    static constexpr std::int32_t smallestWatchedParent = 2;

    /// The outcome of a command: the reason of its failure, or nullopt.
    using Result = std::optional<std::string>;

    bool startReading();
    bool startWatching();
    bool watch();
    bool startPolling();
    void startRemovingLeftOvers();
    void tick();
    void afterPass(bool wasSettled);
    bool catchUp();
    bool isWatchedParent() const { return expectedParentPID_ >= smallestWatchedParent; }
    bool isParentLost() const;
    void passOverContents();
    void finishOutput();

    // ClipboardWorkerCommands.cpp
    template <typename Command>
    void carryOut(Command& command);
    Result execute(const command::ConfigureFilePrompt& command);
    Result execute(const command::Ping& command);
    Result execute(const command::DiscardPending& command);
    Result execute(const command::Quit& command);
    Result execute(const command::Unknown& command);
    void respond(std::uint64_t requestID, bool ok, std::string_view reason);

    // ClipboardWorkerWriting.cpp
    Result execute(const command::WriteText& command);
    Result execute(command::WriteImageData& command);
    Result execute(const command::WriteFiles& command);
    Result writeFormats(const command::WriteFiles& command);
    Result writeImageFile(const command::WriteFiles& command);
    Result writeFileReferences(const command::WriteFiles& command);
    bool noteOwnWrite(std::optional<std::int64_t> changeCount);
    bool hasChangedSince(std::optional<std::uint64_t> expectedSequence);

    // ClipboardWorkerPoll.cpp. Each step of a capture either ends it or gathers values for the next step.
    using CaptureStep = void (ClipboardWorker::*)(const std::shared_ptr<Capture>&);
    void report();
    bool isNews(std::int64_t changeCount) const;
    void retryLeftNews();
    void capture(std::int64_t current);
    void gatherFor(const std::shared_ptr<Capture>& capture, WantedValue wanted, CaptureStep step);
    void resume(std::shared_ptr<Capture> capture, CaptureStep step);
    void captureFiles(const std::shared_ptr<Capture>& capture);
    void capturePlainContent(const std::shared_ptr<Capture>& capture);
    void captureText(const std::shared_ptr<Capture>& capture);
    void warn(std::string_view message);

    // ClipboardWorkerExports.cpp
    void captureFormats(const std::shared_ptr<Capture>& capture);
    void gatherNextFormat(const std::shared_ptr<Capture>& capture);
    void captureFormat(const std::shared_ptr<Capture>& capture);
    void exportCapturedFormats(const std::shared_ptr<Capture>& capture);
    void captureImage(const std::shared_ptr<Capture>& capture);
    void gatherNextPicture(const std::shared_ptr<Capture>& capture);
    void capturePicture(const std::shared_ptr<Capture>& capture);
    void retryAtNextPoll(std::int64_t current);
    void startExport(Capture& capture, EventLoop::Function job);
    ExportContext exportContext();
    bool isStillWanted(const ExportOrigin& origin);
    void emitExport(std::string_view kind, const std::vector<std::string>& paths, const ExportOrigin& origin);

    std::uint64_t sequence();
    static std::uint64_t sequenceFrom(std::int64_t changeCount);

    [[no_unique_address]] OwnerThread owner_;
    Platform& platform_;
    Pipes pipes_;
    std::shared_ptr<Pasteboard> pasteboard_;
    std::shared_ptr<Output> output_;
    MemoryReserve reserve_;
    std::int64_t previousChangeCount_ = 0;   // last reported, or made by the agent
    std::optional<std::int64_t> passedOver_; // an older one that late news may name, never reported
    std::unique_ptr<Gathering> gathering_;   // for the next step of the capture in progress
    std::shared_ptr<PollSchedule> schedule_; // like the next one, null where there is a tick
    std::shared_ptr<MemoryLooks> memoryLooks_;
    std::shared_ptr<FilePaste> filePaste_;
    std::uint64_t reportedLines_ = 0; // lines of output up to the end of the last report
    bool stopping_ = false;
    bool inputEnded_ = false;
    std::int64_t exportGeneration_ = 0; // exports of an earlier generation are stale
    std::shared_ptr<ExportDirectory> exportDirectory_;
    std::optional<ImageFile> previousImage_;            // the picture published last
    std::shared_ptr<PrivateDirectory> previousFormats_; // the formats directory published last
    std::shared_ptr<ExportSlot> exportSlot_ = std::make_shared<ExportSlot>();
    std::int32_t expectedParentPID_;
};

} // namespace tavel
